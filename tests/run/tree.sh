# The procedure tree: toggle, open by keys, find, properties, export, back to the list.

exported() { [ -s "$work/tree.txt" ]; }
# The find opened the path to its hit and nothing else.
export_is_right() {
  head -1 "$work/tree.txt" | grep -q '^|- ' &&
    grep -q '^|   |   |   +- TID ' "$work/tree.txt" &&
    ! grep -q '^|   |   |   |   ' "$work/tree.txt"
}

"$trc" gen --records 400 --seed 5 "$work/tree.trc" >/dev/null
start_reader
start_program "$work/tree.trc"
until_true "the list does not have its rows" says 400 rows
key ctrl+F6
key Home
key Right
picture tree
opens Find ctrl+f
types 'TID ' "Search Text"
key Return
until_true "Enter did not close Find" has_no_window '^Find$'
until_true "the main window is not active after Find" is_active '^Tessera'
picture tree-found
opens "Trace Properties" alt+p
key Escape
until_true "Esc did not close the properties" has_no_window '^Trace Properties$'
until_true "the main window is not active after the properties" is_active '^Tessera'
key alt+f
key e
until_true "Export... opened no dialog" is_active '^Export$'
key ctrl+a
xdotool type --clearmodifiers "$work/tree.tx"
# Held down for a second, as a busy machine may hold any of them.
xdotool keydown t sleep 1 keyup t
key Return
until_true "the export was not written" exported
export_is_right || fail "the export is not what the tree shows: $(cat "$work/tree.txt")"
until_true "the main window is not active after the export" is_active '^Tessera'
key ctrl+F6
picture tree-and-back
key alt+F4
ended_with 0
say "the tree, its keys and its export: good"
