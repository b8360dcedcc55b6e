#!/usr/bin/python3
"""A small screen reader: asks the running program over the accessibility bus, as a real one does.

    screen_reader.py on                    tells programs that a screen reader is there
    screen_reader.py rows                  how many rows the list in front has
    screen_reader.py headers               its columns, parted by commas
    screen_reader.py cell ROW COLUMN       what a cell says, by its column's header
    screen_reader.py cells TABLE           all cells of a table, a row a line, parted by "|"
    screen_reader.py select ROW            selects one more row
    screen_reader.py selected              the selected rows, parted by commas
    screen_reader.py row ROW               "focused", "selected", both with a blank between, or ""
    screen_reader.py words ROW             all of a row in words, with its mark and note
    screen_reader.py rows_of TABLE         how many rows a list beside it has
    screen_reader.py cell_of TABLE ROW COLUMN  what a cell of that list says
    screen_reader.py tree_cells TREE       all cells of a report or of fields, a line each
    screen_reader.py describe ROLE NAME    what is told of a control beside its name
    screen_reader.py offered ITEM          how far an item of the open menu is below the first one
    screen_reader.py chosen                the item of the open menu that has the keyboard
    screen_reader.py ticked ITEM           is it, in the open menu? "yes" or "no"
    screen_reader.py pane DESCRIPTION      what a pane of the status bar says
    screen_reader.py enabled ROLE NAME     "yes" or "no"
    screen_reader.py checked ROLE NAME     "yes" or "no"
    screen_reader.py press NAME            presses a button
    screen_reader.py place ROLE NAME       the middle of it on the screen: x, blank, y
    screen_reader.py cell_place ROW COLUMN the same of a cell
    screen_reader.py part NAME FROM TO     where a field shows these characters: x, y, width, height
    screen_reader.py value NAME            what a field holds
    screen_reader.py line NAME             the line of a text that has the caret: number, blank, text
    screen_reader.py focus                 the name of the control that has the keyboard
    screen_reader.py all ROLE              the names of all that show with that role, a line each

Exits 1 with a word when there is no such thing (yet).
"""
import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, Gio, GLib  # noqa: E402


def switch_on():
    bus = Gio.DBusProxy.new_for_bus_sync(Gio.BusType.SESSION, 0, None, "org.a11y.Bus", "/org/a11y/bus",
                                         "org.freedesktop.DBus.Properties", None)
    on = GLib.Variant("(ssv)", ("org.a11y.Status", "ScreenReaderEnabled", GLib.Variant("b", True)))
    bus.call_sync("Set", on, 0, -1, None)


def parts(node):
    yield node
    for index in range(node.get_child_count()):
        child = node.get_child_at_index(index)
        if child is not None:
            yield from parts(child)


def program():
    desktop = Atspi.get_desktop(0)
    for index in range(desktop.get_child_count()):
        found = desktop.get_child_at_index(index)
        if found is not None and found.get_name() == "tessera":
            return found
    sys.exit("the program is not on the accessibility bus")


def shows(node):
    return node.get_state_set().contains(Atspi.StateType.SHOWING)


def first(what, wanted):
    for node in parts(program()):
        if wanted(node):
            return node
    sys.exit(f"there is no {what}")


def with_role(role, name=None):
    return first(f"{role} {name or ''}", lambda node: node.get_role_name() == role and shows(node) and
                 name in (None, node.get_name()))


def the_list():
    return with_role("table", "Traces")


def side(name):
    return with_role("table", name)


def headers(table):
    return [Atspi.Table.get_column_description(table, column)
            for column in range(Atspi.Table.get_n_columns(table))]


def cell_in(table, row, column):
    return Atspi.Table.get_accessible_at(table, int(row), headers(table).index(column)).get_name()


def cells(name):
    table = with_role("table", name)
    columns = range(Atspi.Table.get_n_columns(table))
    return "\n".join("|".join(Atspi.Table.get_accessible_at(table, row, column).get_name() for column in columns)
                     for row in range(Atspi.Table.get_n_rows(table)))


def tree_cells(name):
    tree = with_role("tree", name)
    found = [tree.get_child_at_index(index) for index in range(tree.get_child_count())]
    return "\n".join(one.get_name() for one in found if one.get_role_name() == "table cell")


def open_items():
    """Those that a walk with the arrow keys comes to, of the menu that was opened last."""
    menus = [node for node in parts(program()) if node.get_role_name() == "popup menu" and shows(node)]
    if not menus:
        sys.exit("no menu is open")
    items = [menus[-1].get_child_at_index(index) for index in range(menus[-1].get_child_count())]
    return [item for item in items if "menu item" in item.get_role_name() and
            item.get_state_set().contains(Atspi.StateType.ENABLED)]


def item_named(name):
    """What stands behind the tab is its key."""
    for place, item in enumerate(open_items()):
        if item.get_name().split("\t")[0] == name:
            return place, item
    sys.exit(f"the menu does not offer {name}")


def chosen():
    for item in open_items():
        if item.get_state_set().contains(Atspi.StateType.FOCUSED):
            return item.get_name().split("\t")[0]
    sys.exit("no item has the keyboard")


def ticked(name):
    return "yes" if item_named(name)[1].get_state_set().contains(Atspi.StateType.CHECKED) else "no"


def row(number):
    states = Atspi.Table.get_accessible_at(the_list(), int(number), 0).get_state_set()
    return " ".join(word for word, state in (("focused", Atspi.StateType.FOCUSED),
                                             ("selected", Atspi.StateType.SELECTED))
                    if states.contains(state))


def value(name):
    return Atspi.Text.get_text(with_role("text", name), 0, -1)


def line(name):
    field = with_role("text", name)
    lines = value(name).split("\n")
    number = value(name)[:Atspi.Text.get_caret_offset(field)].count("\n")
    return f"{number + 1} {lines[number]}"


def focus():
    """The innermost one: what it stands in has the focus too. A tab in front always says that it has it."""
    inside = ("table cell", "list item", "page tab")
    focused = [node for node in parts(program()) if node.get_role_name() not in inside and
               node.get_state_set().contains(Atspi.StateType.FOCUSED)]
    return focused[-1].get_name() if focused else ""


def pane(description):
    label = first(f"pane {description}", lambda node: node.get_role_name() == "label" and
                  node.get_description() == description)
    return label.get_name()


def has(state, role, name):
    return "yes" if with_role(role, name).get_state_set().contains(state) else "no"


def place(role, name):
    box = Atspi.Component.get_extents(with_role(role, name), Atspi.CoordType.SCREEN)
    return f"{box.x + box.width // 2} {box.y + box.height // 2}"


def cell_place(row, column):
    table = the_list()
    found = Atspi.Table.get_accessible_at(table, int(row), headers(table).index(column))
    box = Atspi.Component.get_extents(found, Atspi.CoordType.SCREEN)
    return f"{box.x + box.width // 2} {box.y + box.height // 2}"


def part(name, begin, end):
    """TO is the place behind the last one."""
    field = with_role("text", name)
    boxes = [Atspi.Text.get_character_extents(field, place, Atspi.CoordType.SCREEN)
             for place in (int(begin), int(end) - 1)]
    return f"{boxes[0].x} {boxes[0].y} {boxes[1].x + boxes[1].width - boxes[0].x} {boxes[0].height}"


def names(role):
    return "\n".join(node.get_name() for node in parts(program())
                     if node.get_role_name() == role and shows(node))


QUESTIONS = {
    "on": switch_on,
    "rows": lambda: Atspi.Table.get_n_rows(the_list()),
    "headers": lambda: ",".join(headers(the_list())),
    "cell": lambda row, column: cell_in(the_list(), row, column),
    "words": lambda row: Atspi.Table.get_accessible_at(the_list(), int(row), 0).get_description(),
    "rows_of": lambda name: Atspi.Table.get_n_rows(side(name)),
    "cell_of": lambda name, row, column: cell_in(side(name), row, column),
    "cells": cells,
    "tree_cells": tree_cells,
    "describe": lambda role, name: with_role(role, name).get_description(),
    "offered": lambda name: item_named(name)[0],
    "chosen": chosen,
    "ticked": ticked,
    "select": lambda row: Atspi.Table.add_row_selection(the_list(), int(row)),
    "selected": lambda: ",".join(str(row) for row in Atspi.Table.get_selected_rows(the_list())),
    "row": row,
    "pane": pane,
    "enabled": lambda role, name: has(Atspi.StateType.ENABLED, role, name),
    "checked": lambda role, name: has(Atspi.StateType.CHECKED, role, name),
    "place": place,
    "cell_place": cell_place,
    "part": part,
    "value": value,
    "line": line,
    "focus": focus,
    "press": lambda name: Atspi.Action.do_action(with_role("push button", name), 0),
    "all": names,
}

if len(sys.argv) < 2 or sys.argv[1] not in QUESTIONS:
    sys.exit(__doc__)
answer = QUESTIONS[sys.argv[1]](*sys.argv[2:])
if answer is not None:
    print(answer)
