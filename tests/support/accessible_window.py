# The window as assistive programs know it, from another process: reads an order a line from standard input, answers
# each with lines of text and then a line with a dot.
#
#   tree                 everything that shows: role | name | states, indented by what it belongs to
#   press NAME           does what a click on the thing of that name does
#   focus NAME           gives it the keyboard
#   heard                what the window has told of its own accord since this was last asked
import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib

STATES = ("focusable", "focused", "selected", "checked", "expanded", "collapsed", "busy", "sensitive")
TELLS = ("object:property-change:accessible-name",)
heard = []


def window():
    desktop = Atspi.get_desktop(0)
    # What is remembered of the last question is of no use for the next one.
    desktop.set_cache_mask(Atspi.Cache.NONE)
    for number in range(desktop.get_child_count()):
        program = desktop.get_child_at_index(number)
        if program and program.get_name() == "varnel":
            program.set_cache_mask(Atspi.Cache.NONE)
            return program
    return None


def walk(item, depth=0):
    """What shows, from the top down; what goes while it is looked at is not there."""
    try:
        states = item.get_state_set()
        if depth > 0 and not states.contains(Atspi.StateType.VISIBLE):
            return
        yield item, depth, states
        children = [item.get_child_at_index(number) for number in range(item.get_child_count())]
    except GLib.Error:
        return
    for child in children:
        if child:
            yield from walk(child, depth + 1)


def one_line(text):
    return text.replace("\n", " ").replace(" ", " ").strip()


def show(item, states):
    names = [name for name in STATES[:-1] if states.contains(getattr(Atspi.StateType, name.upper()))]
    if not states.contains(Atspi.StateType.SENSITIVE):
        names.append("disabled")
    return " | ".join((item.get_role_name(), one_line(item.get_name()), " ".join(names)))


def tree():
    lines = []
    for item, _, states in walk(window()) if window() else ():
        try:
            lines.append(show(item, states))
        except GLib.Error:
            pass
    return lines


def press(name):
    for item, _, states in walk(window()) if window() else ():
        try:
            if item.get_name() != name or not states.contains(Atspi.StateType.SENSITIVE):
                continue
            for number in range(item.get_n_actions()):
                if item.get_action_name(number) in ("Press", "Toggle"):
                    item.do_action(number)
                    return ["done"]
        except GLib.Error:
            pass
    return []


def focus(name):
    for item, _, states in walk(window()) if window() else ():
        try:
            takes = states.contains(Atspi.StateType.FOCUSABLE) and states.contains(Atspi.StateType.SENSITIVE)
            if item.get_name() == name and takes:
                return ["done"] if item.grab_focus() else []
        except GLib.Error:
            pass
    return []


def answer(order):
    word, _, name = order.partition(" ")
    if word == "tree":
        return tree()
    if word == "press":
        return press(name)
    if word == "focus":
        return focus(name)
    lines = list(heard)
    heard.clear()
    return lines


def hear(event):
    try:
        heard.append("%s | %s | %s" % (event.type, event.source.get_role_name(), one_line(event.source.get_name())))
    except GLib.Error:
        pass


def read(channel, condition):
    order = sys.stdin.readline()
    if not order:
        Atspi.event_quit()
        return False
    print("\n".join(answer(order.rstrip("\n")) + ["."]), flush=True)
    return True


Atspi.init()
listener = Atspi.EventListener.new(hear)
for tell in TELLS:
    listener.register(tell)
GLib.io_add_watch(sys.stdin.fileno(), GLib.IO_IN | GLib.IO_HUP, read)
print("ready", flush=True)
Atspi.event_main()
