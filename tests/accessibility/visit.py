#!/usr/bin/python3
"""Uses the sample host only through the platform's accessibility bus, as a screen reader would: reads and operates
the banner, and receives its events. The arguments are the host's command and `--then` with further arguments for a second run."""

import json
import subprocess
import sys
import time

import pyatspi
from gi.repository import GLib

# By language: the label of the host's language button, if it has one, and the names of the banner's elements.
LANGUAGES = {
    "en": ("English", "Your privacy, your choice", "Accept all", "Reject all", "Manage preferences", "Marketing",
           "4 vendors", "Back", "Close", "Save choices"),
    "ar": ("العربية", "خصوصيتك، خيارك", "قبول الكل", "رفض الكل", "إدارة التفضيلات", "التسويق", "4 مورّدين", "رجوع", "إغلاق",
           "حفظ الاختيارات"),
    "hi": (None, "आपकी निजता, आपका चुनाव", "सभी स्वीकार करें", "सभी अस्वीकार करें", "प्राथमिकताएँ प्रबंधित करें", "विपणन",
           "3 प्रदाता", "वापस", "बंद करें", "चुनाव सहेजें"),
}
heard = []


def wait_for(look, what):
    """Returns the result of `look` as soon as it is not empty."""
    end = time.time() + 10
    while time.time() < end:
        while GLib.MainContext.default().iteration(False):
            pass
        try:
            found = look()
        except GLib.Error:  # the element has just been removed
            found = None
        if found:
            return found
        time.sleep(0.02)
    sys.exit(f"did not appear within 10 s: {what}; events: {heard}")


def hears(event, name):
    wait_for(lambda: (event, name) in heard, f"{event} of {name}")


class Visit:
    def __init__(self, process):
        self.app = wait_for(lambda: next((each for each in pyatspi.Registry.getDesktop(0)
                                          if each and each.get_process_id() == process.pid), None), "the host")

    def dialog(self):
        return pyatspi.findDescendant(self.app, lambda each: each.getRole() == pyatspi.ROLE_DIALOG)

    def find(self, role, name, *states, inside=None, description=""):
        """Waits for an element with all these states, in `inside` or, by default, in the banner."""
        def look():
            within = inside or self.dialog()
            found = within and pyatspi.findDescendant(
                within, lambda each: (each.getRoleName(), each.name) == (role, name) and
                each.description.startswith(description))
            now = found and [pyatspi.stateToString(state) for state in found.getState().getStates()]
            return found if found and all(state in now for state in states) else None
        return wait_for(look, f"{role} {name} {states}")

    def use(self, action, role, name, **where):
        actions = self.find(role, name, **where).queryAction()
        names = [actions.getName(i) for i in range(actions.nActions)]
        assert actions.doAction(names.index(action)), f"{action} {name}"

    def press(self, name, **where):
        heard.clear()
        self.use("Press", "push button", name, **where)

    def opens(self, title):
        self.press("Privacy settings", inside=self.app)
        self.find("heading", title, "focused")
        assert self.dialog().name == title and self.dialog().getState().contains(pyatspi.STATE_MODAL)
        hears("window:activate", title)

    def ends_with(self, consent):
        stored = lambda each: each.name.startswith("{") and json.loads(each.name) == consent
        wait_for(lambda: not self.dialog() and pyatspi.findDescendant(self.app, stored), f"{consent}, stored")
        hears("window:activate", "Aurora Daily")


def go(visit, language, title, accept, reject, manage, marketing, vendors, back, close, save):
    every = lambda choice: dict(marketing=choice, preferences=choice, statistics=choice)
    for name, choice in ((accept, True), (reject, False)):
        visit.opens(title)
        visit.press(name, inside=visit.dialog())
        visit.ends_with(every(choice))

    visit.opens(title)
    visit.press(manage)
    for element in (visit.find("heading", title), visit.find("push button", save)):
        assert element.queryText().getAttributes(0)[0] == f"language:{language}", element.name
    visit.find("push button", marketing, "collapsed", description=vendors)
    visit.press(marketing, description=vendors)
    visit.find("push button", marketing, "expanded", description=vendors)
    for vendor in ("Adlantern", "Echotrail"):
        visit.use("Toggle", "check box", vendor, description=marketing)
        visit.find("check box", vendor, "checked", description=marketing)
        hears("object:state-changed:checked", vendor)
    visit.press("Adlantern", description=marketing)
    visit.find("heading", "Adlantern")
    visit.find("label", "Adlantern Inc.")
    visit.press(back)
    visit.press(save)
    visit.ends_with(every(False) | dict(marketing=["Adlantern", "Echotrail"], optedIn=True))

    visit.opens(title)
    visit.press(close)
    visit.ends_with(every(False) | dict(marketing=["Adlantern", "Echotrail"], optedIn=True))


def run(command, *languages):
    with subprocess.Popen(command) as host:
        try:
            visit = Visit(host)
            for language in languages:
                button, *names = LANGUAGES[language]
                if button:
                    visit.press(button, inside=visit.app)
                go(visit, language, *names)
                print(f"{language}: accepted, rejected, saved a choice, read a vendor's detail, closed")
        finally:
            host.terminate()


def main():
    for event in ("window:activate", "object:state-changed:checked"):
        pyatspi.Registry.registerEventListener(
            lambda each: heard.append((each.type, each.source.name if each.source else "")), event)
    first, second = sys.argv[1:sys.argv.index("--then")], sys.argv[sys.argv.index("--then") + 1:]
    run(first, "en", "ar")
    run(first + second, "hi")


main()
