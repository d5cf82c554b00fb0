#!/usr/bin/env python3
"""The program read and worked by a second process through the accessibility bus, on a virtual
display of its own: every menu item as the typed list has it, every window with its labels and
values, every message. Usage: accessibility.py PROGRAM MENU_LIST; ends with 77 where the bus, the
display or the Python binding is missing.
"""

import os
import shutil
import subprocess
import sys
import tempfile
import time
import zlib

try:
    import gi

    gi.require_version("Atspi", "2.0")
    from gi.repository import Atspi, GLib
except (ImportError, ValueError):
    sys.exit(77)

State = Atspi.StateType
HIDDEN = ("mnumDraw", "mnuChannelsAlpha(0)")  # the second while there are no mask files
PATIENCE = 20  # seconds until something that should happen counts as missing


def children(node):
    found = (node.get_child_at_index(i) for i in range(node.get_child_count()))
    return [child for child in found if child]


def descend(node):
    for child in children(node):
        yield child
        yield from descend(child)


def has(node, state):
    return node.get_state_set().contains(state)


# Later releases of the bus call a push button a button.
def role(node):
    return node.get_role_name().removeprefix("push ")


def shown(node, *roles):
    return [n for n in descend(node) if role(n) in roles and has(n, State.SHOWING)]


def until(condition, what):
    end = time.time() + PATIENCE
    while time.time() < end:
        try:
            result = condition()
            if result:
                return result
        except GLib.Error:
            pass  # what was looked at has just gone
        time.sleep(0.02)
    raise AssertionError("never came: " + what)


def press(node):
    Atspi.Action.do_action(node, 0)


def text_of(node):
    return Atspi.Text.get_text(node, 0, -1)


def type_in(node, text):
    Atspi.EditableText.set_text_contents(node, text)


def spoken(caption):
    return caption.replace("&&", "\0").replace("&", "").replace("\0", "&")


class Program:
    def __init__(self, path):
        self.process = subprocess.Popen([path])
        self.root = until(self.find, "the program on the bus")
        self.bar = until(lambda: next((n for n in descend(self.root)
                                       if role(n) == "menu bar"), None), "the menu bar")

    def find(self):
        apps = children(Atspi.get_desktop(0))
        return next((a for a in apps if a.get_name() == "kestrelvane" and children(a)), None)

    def windows(self):
        return [w for w in children(self.root)
                if role(w) in ("dialog", "alert") and has(w, State.SHOWING)]

    def window(self, what):
        return until(lambda: next(iter(self.windows()), None), "the window of " + what)

    def leave(self, window, *buttons):
        pressed = next(b for name in buttons for b in shown(window, "button")
                       if b.get_name() == name)
        press(pressed)
        until(lambda: not has(window, State.SHOWING), "the end of " + window.get_name())

    def canvas(self):
        return next((n for n in descend(self.root) if role(n) == "canvas"
                     and has(n, State.SHOWING)), None)

    def open(self, path, what):
        press(self.items["mnuOpen"])
        window = self.window("Open")
        type_in(shown(window, "text")[0], path)
        button = next(b for b in shown(window, "button") if b.get_name() == "Open")
        until(lambda: has(button, State.ENABLED), "a usable Open button")
        press(button)
        return until(what, path)

    def walk(self, lines, usable, documents=()):
        """Every item as it is shown, against the list; behind it the titles of the documents."""
        self.items = {}
        menus = [self.bar]
        rest = {}
        for level, name, caption, special in lines:
            del menus[level + 1:]
            parent = menus[level]
            if parent not in rest:
                rest[parent] = [n for n in children(parent) if role(n) != "separator"]
            item = rest[parent].pop(0)
            self.items[name] = item
            assert item.get_name() == spoken(caption) or "Image(" in name, (name, item.get_name())
            built = "not available yet" not in (item.get_description() or "")
            wanted = built and usable(special) and name not in HIDDEN
            assert has(item, State.ENABLED) == wanted, (name, "enabled")
            assert has(item, State.CHECKED) == ("+" in special) or "Image(" in name, (name, "check")
            assert item.get_description(), (name, "explains nothing")
            menus.append(next(iter(children(item)), item))
        left = [item.get_name() for items in rest.values() for item in items]
        assert left == [f"{i} {title}" for i, title in enumerate(documents, 1)], left


def menu_lines(path):
    for line in open(path, encoding="utf-8"):
        parts = line.rstrip("\n").split("|")
        if line.startswith("#") or parts[1] == "-":
            continue
        indent = len(line) - len(line.lstrip(" "))
        yield indent // 2, parts[0].strip(), parts[1], (parts + [""])[2].split("}")[-1]


def read(window):
    """Whatever can have the focus says what it is; what holds a value takes another one."""
    assert window.get_name(), "a window without a title"
    told = [n.get_name() for n in shown(window, "label")]
    assert role(window) != "alert" or any(told), "a message without a text"
    for node in descend(window):
        if not has(node, State.SHOWING) or not has(node, State.FOCUSABLE):
            continue
        kind = role(node)
        named = node.get_name() or node.get_relation_set() or kind in ("frame", "table cell")
        assert named, (window.get_name(), kind, "no name")
        if kind == "text" and text_of(node).isdigit():
            type_in(node, "7")
            assert text_of(node) == "7", (window.get_name(), node.get_name())
        if kind == "check box":
            before = has(node, State.CHECKED)
            press(node)
            until(lambda: has(node, State.CHECKED) != before, "the other state of a check box")


def picture(path, side=48):
    """Writes a PNG of one colour."""
    def chunk(kind, data):
        body = kind + data
        return len(data).to_bytes(4, "big") + body + zlib.crc32(body).to_bytes(4, "big")

    head = side.to_bytes(4, "big") * 2 + bytes([8, 2, 0, 0, 0])
    rows = zlib.compress((b"\0" + b"\x20\x60\xa0" * side) * side)
    with open(path, "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", rows)
                   + chunk(b"IEND", b""))


def work(program_path, list_path, folder):
    lines = list(menu_lines(list_path))
    program = Program(program_path)
    program.walk(lines, lambda special: "!" in special)

    broken = os.path.join(folder, "broken.png")
    with open(broken, "wb") as file:
        file.write(b"no picture")
    message = program.open(broken, lambda: next(
        (w for w in program.windows() if w.get_name() == "Invalid Image"), None))
    read(message)
    program.leave(message, "OK")

    path = os.path.join(folder, "picture.png")
    picture(path)
    canvas = program.open(path, program.canvas)
    assert canvas.get_description() == "48 by 48 pixels at 100 percent", canvas.get_description()
    until(lambda: has(program.items["mnuSave"], State.ENABLED), "a usable Save")
    program.walk(lines, lambda special: "?" not in special, ["picture.png@100%"])

    opened = 0
    for _, name, caption, special in lines:
        if ">" not in special or not has(program.items[name], State.ENABLED):
            continue
        press(program.items[name])
        window = program.window(name)
        read(window)
        program.leave(window, "Cancel", "OK")
        opened += 1
        while name == "mnuMetadata(4)" and program.windows():
            program.leave(program.windows()[0], "Cancel", "OK")
    print(opened, "windows read")

    # Values reach the command: a picture of the size that was typed through the bus.
    press(program.items["mnuNew"])
    window = program.window("New")
    for box, value in zip(shown(window, "text"), ("120", "80")):
        type_in(box, value)
    program.leave(window, "OK")
    until(lambda: any(n.get_description() == "120 by 80 pixels at 100 percent"
                      for n in shown(program.root, "canvas")), "the new picture")

    # Closing asks; No ends it.
    press(program.items["mnuClose"])
    message = program.window("Close")
    read(message)
    assert any("This new file is not saved" in n.get_name() for n in shown(message, "label"))
    program.leave(message, "No")
    program.process.terminate()
    program.process.wait()


def on_virtual_display(task, manager=None):
    """Runs `task` with a folder of its own, on a bus and a display of its own."""
    if "KVN_INSIDE" not in os.environ:
        if not shutil.which("dbus-run-session") or not shutil.which("Xvfb"):
            sys.exit(77)
        os.environ["KVN_INSIDE"] = "1"
        os.execvp("dbus-run-session", ["dbus-run-session", "--", sys.executable, *sys.argv])
    with tempfile.TemporaryDirectory() as folder:
        for name in ("XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME",
                     "XDG_CACHE_HOME"):
            os.environ[name] = os.path.join(folder, name.lower())
            os.mkdir(os.environ[name], 0o700)
        read_end, write_end = os.pipe()
        servers = [subprocess.Popen(["Xvfb", "-displayfd", str(write_end), "-screen", "0",
                                     "1280x800x24", "-nolisten", "tcp"], pass_fds=[write_end],
                                    stderr=subprocess.DEVNULL)]
        os.close(write_end)
        os.environ["DISPLAY"] = ":" + os.read(read_end, 16).decode().strip()
        os.environ["QT_QPA_PLATFORM"] = "xcb"
        os.environ["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
        if manager:
            servers.append(subprocess.Popen([manager], stderr=subprocess.DEVNULL))
        try:
            task(folder)
        finally:
            for server in reversed(servers):
                server.terminate()
                server.wait()


def main():
    program, menu_list = (os.path.abspath(a) for a in sys.argv[1:3])
    on_virtual_display(lambda folder: work(program, menu_list, folder))


if __name__ == "__main__":
    main()
