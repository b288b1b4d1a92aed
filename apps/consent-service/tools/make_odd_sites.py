#!/usr/bin/env python3
"""Writes sites whose documents are unusual: empty, huge, contradictory or hard to see.

    tools/make_odd_sites.py sites/demo FOLDER

Each site is the demo site in English with one thing changed. FOLDER/index.json lists the sites: what is odd about
each, and the commands for talvo-host that open its screens.
"""

import copy
import json
import pathlib
import struct
import sys
import zlib

WORDS = "We and our partners use cookies to run this app and to measure what is read. "
LONG_NAME = "Donaudampfschifffahrtsgesellschaft für Reichweitenmessung und Werbewirkungsforschung mbH"


def png(width, height, color):
    """A picture in one colour (red, green, blue, alpha) with a darker frame, so that its edges can be seen."""
    edge = bytes(v // 2 for v in color[:3]) + color[3:4]

    def line(y):
        pixels = edge * width if y in (0, height - 1) else edge + color * (width - 2) + edge
        return b"\0" + pixels

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    header = struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0)
    data = zlib.compress(b"".join(line(y) for y in range(height)), 9)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", data) + chunk(b"IEND", b"")


class Site:
    """The documents of a site, with short ways to the parts that are changed."""

    def __init__(self, demo):
        self.customization = json.loads((demo / "customization.en.json").read_text())
        self.configuration = json.loads((demo / "configuration.json").read_text())
        self.services = json.loads((demo / "services.en.json").read_text())
        self.files = {"logo.png": (demo / "logo.png").read_bytes()}
        inner = self.customization["customization"]
        self.colors = inner["colors"]
        self.settings = inner["settings"]
        self.urls = inner["urls"]
        self.resources = inner["resources"]
        self.texts = inner["messages"]["bannerMessages"]
        self.screens = inner["components"]

    def component(self, identifier, screen="mainScreen"):
        return next(each for each in self.screens[screen] if each["id"] == identifier)

    def remove(self, *identifiers, screen="mainScreen"):
        self.screens[screen] = [each for each in self.screens[screen] if each["id"] not in identifiers]

    def keep(self, *identifiers, screen="mainScreen"):
        self.screens[screen] = [each for each in self.screens[screen] if each["id"] in identifiers]

    def buttons(self, *identifiers, screen="mainScreen"):
        self.component("buttons", screen)["buttons"] = [{"id": each} for each in identifiers]

    def tab(self):
        return self.component("tabs", "secondaryScreen")["tabs"][0]

    def logo(self, name, data):
        self.files[name] = data
        self.resources["mainLogoUrl"] = "{{base}}/sites/SITE/" + name

    def vendors(self, names, category="marketing"):
        self.services["libraries"] = [
            {"id": f"s{i}", "name": f"s{i}", "fullName": "Service", "category": category, "vendor": name,
             "description": "Measures.", "version": "1.0", "domain": "odd.example"} for i, name in enumerate(names)]
        self.services["services"] = [{"id": name, "description": "A partner."} for name in names]

    def colored(self, background, font, button, button_font):
        self.colors.update(background=background, font=font, buttonBackground=button, buttonFontColor=button_font)


ODD = []


def odd(about, opens="preferences"):
    """Adds a site; `opens` says how far its screens can be opened: main, preferences, category or vendor."""
    def add(change):
        ODD.append((change.__name__.replace("_", "-"), about, opens, change))
        return change
    return add


@odd("Only a close control", "main")
def only_close(site): site.keep("closeButton")

@odd("No component at all", "main")
def nothing(site): site.screens["mainScreen"] = []

@odd("Only buttons")
def only_buttons(site): site.keep("buttons")

@odd("An empty title")
def empty_title(site): site.texts["title"] = site.texts["preferenceTitle"] = ""

@odd("A blank title")
def blank_title(site): site.texts["title"] = site.texts["preferenceTitle"] = "   "

@odd("No title component")
def no_title(site):
    site.remove("title")
    site.remove("title", screen="secondaryScreen")

@odd("A title of six lines")
def long_title(site): site.texts["title"] = site.texts["preferenceTitle"] = WORDS * 3

@odd("A title of one long word")
def long_word(site): site.texts["title"] = site.texts["preferenceTitle"] = "Datenschutzgrundverordnungskonformitätserklärung"

@odd("A message of forty sentences")
def long_message(site): site.texts["mainMessage"] = WORDS * 40

@odd("A message with paragraphs, tabs and an address without a blank")
def paragraphs(site): site.texts["mainMessage"] = ("First.\n\nSecond,\tafter a tab.\n\n\n\nThird: "
                                                   "https://aurora-daily.example/" + "privacy/" * 12)

@odd("An empty message")
def empty_message(site): site.texts["mainMessage"] = site.texts["preferenceMainMessage"] = ""

@odd("No message component")
def no_message(site): site.remove("description")

@odd("One button", "main")
def one_button(site): site.buttons("acceptAll")

@odd("Two buttons", "main")
def two_buttons(site): site.buttons("acceptAll", "rejectAll")

@odd("No buttons", "main")
def no_buttons(site): site.remove("buttons")

@odd("A row in which one button is unknown")
def unknown_button(site): site.buttons("acceptAll", "shareAll", "managePreferences")

@odd("Button titles of very different length")
def long_buttons(site):
    site.texts.update(acceptButton="Yes", rejectButton="No thanks, I would rather go on without any of this, please")

@odd("Empty button titles", "main")
def empty_buttons(site): site.texts.update(acceptButton="", rejectButton="  ")

@odd("Every link, with long texts")
def many_links(site):
    site.component("links")["links"] = ["privacyPolicy", "cookiePolicy", "termsAndConditions", "dsr", "doNotSellMyData"]
    site.texts.update(privacyPolicyURLText=WORDS, cookiePolicyURLText="Cookies")

@odd("A logo of 16:1")
def wide_logo(site): site.logo("wide.png", png(1280, 80, b"\xff\xb0\x30\xff"))

@odd("A logo of 1:4")
def tall_logo(site): site.logo("tall.png", png(60, 240, b"\xff\xb0\x30\xff"))

@odd("A logo of 8 by 8 pixels")
def tiny_logo(site): site.logo("tiny.png", png(8, 8, b"\xff\xb0\x30\xff"))

@odd("A translucent logo in front of a light card")
def translucent_logo(site):
    site.colored("#FFFFFF", "#202020", "#2F6BEB", "#FFFFFF")
    site.logo("glass.png", png(300, 100, b"\x30\xb0\x60\x60"))

@odd("A logo that is missing")
def missing_logo(site): site.resources["mainLogoUrl"] = "{{base}}/sites/SITE/missing.png"

@odd("A logo in an unknown format")
def unknown_logo(site): site.logo("logo.bin", b"no picture at all" * 40)

@odd("An SVG logo")
def svg_logo(site):
    site.logo("logo.svg", b'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 240 80"><rect width="240" height="80" '
                          b'rx="24" fill="#ffb030"/><circle cx="40" cy="40" r="24" fill="#101b36"/></svg>')

@odd("Logo and title without a close control")
def no_close(site): site.remove("closeButton")

@odd("Black on white", "vendor")
def white(site): site.colored("#FFFFFF", "#000000", "#000000", "#FFFFFF")

@odd("Neon colours", "vendor")
def neon(site): site.colored("#FF00C8", "#00FF66", "#FFFF00", "#0000FF")

@odd("Texts of alpha 0")
def invisible_text(site): site.colors.update(font="#00FFFFFF", buttonFontColor="#00000000")

@odd("Texts in the colour of what is behind them")
def same_colors(site): site.colored("#305090", "#305090", "#305090", "#305090")

@odd("A translucent card")
def translucent_card(site): site.colors["background"] = "#80101B36"

@odd("Colours that are no colours")
def no_colors(site): site.colored("blue-ish", "", "#12", "rgb(1,2,3)")

@odd("At the top, without a dimmed background")
def at_the_top(site): site.settings.update(positioning="top", showBlurBackground=False)

@odd("One category", "category")
def one_category(site): site.tab()["categories"] = ["marketing"]

@odd("Only do-not-sell")
def only_do_not_sell(site): site.tab()["categories"] = ["doNotSell"]

@odd("Nobody with vendors")
def nobody(site): site.vendors([])

@odd("Three hundred vendors", "category")
def many_vendors(site): site.vendors([f"Vendor number {i}" for i in range(300)])

@odd("Vendors with long names", "vendor")
def long_names(site):
    site.vendors([LONG_NAME, LONG_NAME.replace(" ", ""), "Short"])
    site.services["services"][0]["description"] = WORDS * 12

@odd("Vendors without a name", "category")
def empty_names(site): site.vendors(["", "  ", "Named"])

@odd("Vendors about whom nothing is known", "vendor")
def bare_vendors(site):
    site.vendors(["Quiet", "Silent"])
    site.services["services"] = []
    for each in site.services["libraries"]:
        each.update(description="", fullName="", version="", domain="")

@odd("Categories that cannot be switched", "category")
def read_only(site): site.tab()["readOnly"] = True

@odd("Categories without descriptions or vendors")
def bare_categories(site): site.tab().update(showCategoryDescription=False, services=False)

@odd("Two tabs")
def two_tabs(site):
    component = site.component("tabs", "secondaryScreen")
    second = copy.deepcopy(component["tabs"][0])
    second.update(readOnly=True, categories=["necessary", "marketing"])
    component["tabs"].append(second)

@odd("Preferences without a tab")
def no_tabs(site): site.component("tabs", "secondaryScreen")["tabs"] = []

@odd("No preferences at all")
def no_preferences(site): site.screens.pop("secondaryScreen")

@odd("Preferences with a title only")
def title_only(site): site.keep("title", screen="secondaryScreen")

@odd("Unknown components between known ones")
def unknown_components(site): site.screens["mainScreen"][2:2] = [{"id": "carousel"}, {"id": "poll"}]

@odd("Everything upside down")
def upside_down(site):
    for screen in site.screens.values():
        screen.reverse()

@odd("Every component twice")
def twice(site): site.screens["mainScreen"] *= 2

@odd("An Arabic title above an English message")
def mixed_directions(site): site.texts["title"] = "خصوصيتك، اختيارك"

@odd("Emoji and joined emoji everywhere")
def emoji(site):
    site.texts.update(title="🍪 Cookies? 👩‍👩‍👧‍👦", mainMessage="🍪🍫🥛 " * 12, acceptButton="👍 Yes", rejectButton="👎 No",
                      marketingTitle="📣 Ads 🏳️‍🌈")

@odd("Accents piled upon each other")
def piled_accents(site): site.texts["title"] = "".join(letter + "\u0301\u0302\u0308\u0323" * 3 for letter in "Your choice")


def commands(site, opens):
    """The commands that open the screens one after the other, each as a name and lines of a script."""
    yield "main", ["banner"]
    if opens == "main":
        return
    yield "preferences", ["tap " + site.texts["preferencesButton"]]
    if opens == "preferences":
        return
    yield "category", ["tap expander:" + site.texts["marketingTitle"]]
    if opens == "vendor":
        vendors = sorted(each["vendor"] for each in site.services["libraries"] if each["category"] == "marketing")
        yield "vendor", ["tap button:" + vendors[0]]


def main(demo, folder):
    index = []
    for name, about, opens, change in ODD:
        site = Site(demo)
        change(site)
        target = folder / name
        target.mkdir(parents=True, exist_ok=True)
        (target / "site.json").write_text('{"languages": ["en"]}\n')
        text = json.dumps(site.customization, ensure_ascii=False, indent=1)
        (target / "customization.en.json").write_text(text.replace("sites/SITE/", f"sites/{name}/"))
        (target / "configuration.json").write_text(json.dumps(site.configuration))
        (target / "services.json").write_text(json.dumps(site.services, ensure_ascii=False, indent=1))
        for file, data in site.files.items():
            (target / file).write_bytes(data)
        index.append({"site": name, "about": about, "screens": dict(commands(site, opens))})
    (folder / "index.json").write_text(json.dumps(index, ensure_ascii=False, indent=1))


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]))
