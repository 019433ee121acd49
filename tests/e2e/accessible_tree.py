# Prints what a screen reader finds in the window: a line "role | name | states" for everything that shows.
import sys
import time

import pyatspi

STATES = (pyatspi.STATE_FOCUSABLE, pyatspi.STATE_FOCUSED, pyatspi.STATE_SELECTED)


def find_window(seconds):
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        for application in pyatspi.Registry.getDesktop(0):
            if application and application.name == "varnel" and application.childCount > 0:
                return application[0]
        time.sleep(0.1)
    sys.exit("no window on the accessibility bus")


def show(item):
    states = item.getState()
    if not states.contains(pyatspi.STATE_VISIBLE):
        return
    names = [pyatspi.stateToString(state) for state in STATES if states.contains(state)]
    print(item.getRoleName(), item.name, " ".join(names), sep=" | ")
    for child in item:
        if child:
            show(child)


show(find_window(10))
