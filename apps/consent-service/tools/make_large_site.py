#!/usr/bin/env python3
"""Writes the catalogue of the site `large`: 1,000 invented vendors over the four categories.

    tools/make_large_site.py sites/large/services.json

The same file comes out every time: what varies between vendors follows from their position alone.
"""

import json
import sys

STEMS = """Alder Amber Arrow Birch Bramble Brook Cedar Cinder Clover Copper Coral Crane Drift Ember Fable Fern Flint
Frost Gale Glen Hazel Heron Indigo Ivory Juniper Lantern Lark Maple Marble Meadow Mist Opal Otter Pebble Quill Raven
Saffron Sparrow Tide Willow""".split()

# Per category: the number of vendors, the last words of their names, and their services (name, full name,
# description).
CATEGORIES = {
    "necessary": (60, ["Gate", "Shield"], [
        ("route", "Request routing", "Sends each request to a server that can answer it."),
        ("guard", "Abuse protection", "Recognises automated traffic and keeps it out."),
        ("session", "Session", "Keeps a visit together from one screen to the next."),
    ]),
    "preferences": (110, ["Player", "Locale", "Voice"], [
        ("settings", "Display settings", "Remembers the size, theme and language that were chosen."),
        ("volume", "Playback settings", "Remembers volume, speed and subtitles."),
        ("place", "Chosen place", "Remembers the place whose local content was asked for."),
    ]),
    "statistics": (210, ["Metrics", "Tally", "Gauge", "Panel", "Lens", "Sample"], [
        ("visits", "Visit count", "Counts visits and how long they last."),
        ("paths", "Screen flow", "Records the order in which screens are opened."),
        ("speed", "Loading times", "Measures how long screens take to appear."),
        ("errors", "Error reports", "Sends technical details when something fails."),
    ]),
    "marketing": (620, ["Ads", "Audience", "Bids", "Deals", "Exchange", "Impact", "Leads", "Loop", "Market", "Match",
                        "Media", "Pixel", "Promo", "Reach", "Retarget", "Signal"], [
        ("id", "Advertising ID", "Recognises the device from one app to another."),
        ("cap", "Frequency cap", "Limits how often the same ad is shown."),
        ("segment", "Interest groups", "Sorts people into groups by what they look at."),
        ("convert", "Sales measurement", "Links an ad that was seen with a purchase that followed."),
        ("sync", "ID matching", "Links its own ID with those of other companies."),
    ]),
}

FORMS = ["Ltd", "GmbH", "B.V.", "SAS", "Oy", "AB", "S.r.l.", "Inc.", "ApS", "S.L."]
PLACES = ["Cork, Ireland", "Bremen, Germany", "Utrecht, Netherlands", "Nantes, France", "Turku, Finland",
          "Uppsala, Sweden", "Bologna, Italy", "Portland, United States", "Odense, Denmark", "Bilbao, Spain",
          "Leeds, United Kingdom", "Ghent, Belgium", "Graz, Austria"]


def vendor_name(stem, ending, index):
    styles = [f"{stem} {ending}", f"{stem}{ending}", f"{stem}{ending.lower()}"]
    return styles[index % 3]


def vendors():
    """Yields (index, category, name, domain), every name once."""
    index = 0
    for category, (count, endings, _) in CATEGORIES.items():
        for number in range(count):
            # Walk through the pairs in steps of 7, which is coprime to their number, so that neighbours
            # differ in both words.
            pair = number * 7 % (len(STEMS) * len(endings))
            stem, ending = STEMS[pair % len(STEMS)], endings[pair // len(STEMS)]
            yield index, category, vendor_name(stem, ending, index), f"{stem}-{ending}.example".lower()
            index += 1


def services_of(index, category, name, domain):
    kinds = CATEGORIES[category][2]
    for number in range(1 + (index % 5 == 0) + (index % 11 == 0)):
        kind, full_name, description = kinds[(index + number) % len(kinds)]
        yield {
            "id": f"s{index:04}-{number}",
            "name": f"{name.lower().replace(' ', '')[:6]}_{kind}",
            "fullName": full_name,
            "category": category,
            "description": description,
            "version": f"{1 + index % 4}.{index % 10}",
            "domain": domain,
            "vendor": name,
        }


def details_of(index, category, name, domain):
    consent = "Legitimate interest" if category == "necessary" else "Consent"
    return {
        "id": name,
        "domain": domain,
        "processingCompanyName": f"{name} {FORMS[index % len(FORMS)]}",
        "processingCompanyLocation": PLACES[index * 5 % len(PLACES)],
        "DTOProbableEmails": f"privacy@{domain}",
        "legalBasis": consent,
        "privacyPolicyURL": f"https://{domain}/privacy",
    }


def lines(records):
    return ",\n".join("    " + json.dumps(record) for record in records)


def main():
    everyone = list(vendors())
    assert len(everyone) == len({name for _, _, name, _ in everyone}) == 1000
    libraries = [service for vendor in everyone for service in services_of(*vendor)]
    details = [details_of(*vendor) for vendor in everyone]
    with open(sys.argv[1], "w", encoding="utf-8") as file:
        file.write('{\n  "model": "vendors",\n  "libraries": [\n' + lines(libraries) + '\n  ],\n  "services": [\n' +
                   lines(details) + "\n  ]\n}\n")


if __name__ == "__main__":
    main()
