"""screen_reader.py BIN ARTEFACTS: what a screen reader meets in the windows of the desktop program, over AT-SPI.

Goes through the windows by keys alone. In each one, Tab is pressed until the first control comes back; every control
has to say its name and what it is, and lie behind the one before it, as the forms' own tests find in the process. What
was said is written to ARTEFACTS. With PICTURES set ("only": and no Tab pressed), a picture of each window stands there,
too; SCREEN, QT_SCALE_FACTOR and PROGRAM_OPTIONS (-style fusion) let them be looked at in other sizes and colours. Run
within dbus-run-session.
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

try:
    import gi

    gi.require_version("Atspi", "2.0")
    from gi.repository import Atspi, GLib
except (ImportError, ValueError) as missing:
    print("skipped, not installed: python3-gi, gir1.2-atspi-2.0:", missing)
    sys.exit(0)

PATIENCE = int(os.environ.get("SECONDS_A_STEP", "30"))  # a loaded machine is slow, not wrong
MOST_STOPS = 60
# What is met within a list is said with the list's own name.
WITHIN = {"table cell", "list item", "tree item", "table row", "table column header"}
SEARCH = "Sök"
BEHIND = "behind "
PAUSE = "until the list is there"
NOT_SAID = {"unknown", "invalid", "filler", "redundant object", "application"}

# (name, keys that open it, the windows that are opened from there, and what closes it, if not Escape)
WINDOWS = (
    "jobs", [], [
        ("preview", ["Home"] + ["Down"] * 10 + ["F5"], [
            ("excerpt", ["alt+f"], []),
            ("calculation", ["alt+l", *"inpris", "Return", "F8"], []),
        ]),
        ("runs", ["ctrl+h"], [("compare", ["Home", "alt+j"], []), ("undo", ["Home", "alt+aring"], [])]),
        ("job", ["Home"] + ["Down"] * 5 + ["Return"], [
            ("limits", ["alt+g"], []),
            ("mask", ["alt+odiaeresis"], [("sample", ["alt+x"], [])]),
        ]),
        ("converted", ["Home"] + ["Down"] * 11 + ["Return"], [
            ("source", ["alt+p"], [("columns", ["alt+k"], []), ("leftout", ["alt+u"], [])]),
        ]),
        ("couplings", ["Home", "Return"], [], "alt+a"),
        ("products", ["ctrl+p", "1", PAUSE], []),
        ("registers", ["ctrl+g"], [("row", ["alt+r", "Down", "ctrl+n"], [])]),
        ("discounts", ["Home"] + ["Down"] * 4 + ["alt+r"], [], "F12"),
        ("confirmation", ["Home"] + ["Down"] * 5 + ["ctrl+r"], []),
    ])


class Failed(Exception):
    pass


def run(*command, **options):
    return subprocess.run(command, capture_output=True, text=True, check=False, **options).stdout


def until(condition, what):
    end = time.monotonic() + PATIENCE
    while True:
        while GLib.MainContext.default().iteration(False):
            pass
        found = condition()
        if found:
            return found
        if time.monotonic() > end:
            raise Failed(what)
        time.sleep(0.01)


def goes_back(start, end):
    """Up, but to the next column, or to the left within a row. A search box may stand behind its list."""
    (left, top, right, bottom), (to_left, to_top, to_right, to_bottom) = start[3], end[3]
    if end[1].startswith(SEARCH):
        return False
    return (to_bottom < top and to_left <= right) or (to_right < left and to_top <= bottom and to_bottom >= top)


class Session:
    def __init__(self, bin_folder, artefacts):
        self.bin, self.artefacts = bin_folder, artefacts
        self.said, self.faults = [], []
        self.focused = None
        self.listener = Atspi.EventListener.new(self.on_focus)
        self.listener.register("object:state-changed:focused")

    def on_focus(self, event):
        if event.detail1:
            self.focused = event.source

    def keys(self, *keys):
        if keys[-1] == PAUSE:
            self.keys(*keys[:-1])
            time.sleep(1.5)
            return
        run("xdotool", "key", "--delay", "5", *keys)

    def windows(self):
        """Those on the screen, the one on top last."""
        return run("xdotool", "search", "--onlyvisible", "--pid", str(self.program.pid), "--name", ".").split()

    def take_keys(self, window):
        run("xdotool", "windowfocus", window)
        return run("xdotool", "getwindowfocus").strip() == window

    def enter(self, other_than, what):
        def top():
            there = self.windows()
            return there and there[-1] != other_than and there[-1]

        until(top, f"no window came: {what}")
        if other_than is not None and not what.startswith(BEHIND):
            time.sleep(0.1)  # a window that waits may come and go first
        window = until(top, f"no window came: {what}")
        until(lambda: self.take_keys(window), f"the window does not take the keys: {what}")
        return window

    def tour(self, window_of, before=None):
        name, keys, inner, *closing = window_of
        if keys:
            self.keys(*keys)
        window = self.enter(before, name)
        if "PICTURES" in os.environ:
            run("import", "-window", window, str(self.artefacts / f"{name}.png"))
        if os.environ.get("PICTURES") != "only":
            self.walk(name)
        for each in inner:
            window = self.tour(each, window)
        if before is not None:
            self.close(window, *closing)
            return self.enter(window, BEHIND + name)
        return window

    def close(self, window, key="Escape"):
        """Escape may be a box's own while there is something in it."""
        for _ in range(2):
            self.keys(key)
            end = time.monotonic() + 1
            while self.windows()[-1:] == [window] and time.monotonic() < end:
                time.sleep(0.02)
            if self.windows()[-1:] != [window]:
                return

    # --- one window
    def next_stop(self, key="Tab"):
        self.focused = None
        self.keys(key)
        try:
            until(lambda: self.focused is not None, "")
        except Failed:
            return None
        while GLib.MainContext.default().iteration(False):
            pass
        return self.describe(self.focused)

    def describe(self, met):
        """(who, name, role, place), of the list where the focus is in one."""
        role = met.get_role_name()
        while role in WITHIN:
            met = met.get_parent()
            role = met.get_role_name()
        place = met.get_extents(Atspi.CoordType.SCREEN)
        name = met.get_name() or ""
        if role == "combo box":  # whose name is what is chosen in it
            labels = [relation.get_target(i).get_name() for relation in met.get_relation_set()
                      for i in range(relation.get_n_targets())
                      if relation.get_relation_type() == Atspi.RelationType.LABELLED_BY]
            name = " ".join(labels)
        return (hash(met), name, role,
                (place.x, place.y, place.x + place.width - 1, place.y + place.height - 1))

    def walk(self, name):
        stops = []
        while len(stops) < MOST_STOPS:
            stop = self.next_stop()
            if stop is None:
                self.faults.append(f"{name}: nothing is said behind {stops[-1] if stops else 'the beginning'}")
                break
            if stops and stop == stops[0]:
                break
            stops.append(stop)
        else:
            self.faults.append(f"{name}: Tab never comes round")
        self.next_stop("shift+Tab")  # to where the window began
        self.said += [f"{name}: {role} \"{said}\"" for _, said, role, _ in stops]
        backwards = [(stops[i - 1], stops[i]) for i in range(len(stops)) if goes_back(stops[i - 1], stops[i])]
        if len(backwards) > 1:  # once it has to begin anew
            self.faults.append(f"{name}: Tab goes back: " + "; ".join(f"{a[1:3]} to {b[1:3]}" for a, b in backwards))
        for _, said, role, place in stops:
            if not said:
                self.faults.append(f"{name}: no name: {role} at {place}")
            if role in NOT_SAID:
                self.faults.append(f"{name}: not said what it is: {said} {role}")

    def go(self):
        with tempfile.TemporaryDirectory() as work:
            work = pathlib.Path(work)
            self.start(work)
            try:
                self.tour(WINDOWS)
            except Failed:
                run("import", "-window", "root", str(self.artefacts / "failed.png"))
                raise
            finally:
                self.program.terminate()
                self.program.wait()

    def start(self, work):
        data, home = work / "Data", work / "home"
        swedish = dict(os.environ, LC_ALL="sv_SE.UTF-8")
        cli = str(self.bin / "kolmera-cli")
        run(cli, "demo", str(data), env=swedish)
        prices = data / "Prisfiler" / "SKRUV.TXT"
        for _ in range(2):  # the second run has something to compare, and to take back
            run(cli, "run", "Bruknäs skruv och beslag", "--data", str(data), env=swedish)
            prices.write_bytes(prices.read_bytes().replace(b"SB-10000", b"SB-99999"))
        home.mkdir(mode=0o700)
        (home / "Dorvik").mkdir()
        (home / "Dorvik" / "settings.ini").write_text("[Start]\nLang=SE\n")
        for file in ("kolmera", "DVLang.sys"):  # a program alone works on its own folder
            shutil.copy2(self.bin / file, data)
        around = dict(swedish, HOME=str(home), XDG_CONFIG_HOME=str(home), XDG_RUNTIME_DIR=str(home),
                      QT_QPA_PLATFORM="xcb", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")
        with open(self.artefacts / "kolmera.log", "w", encoding="utf-8") as log:
            self.program = subprocess.Popen([data / "kolmera", *os.environ.get("PROGRAM_OPTIONS", "").split()],
                                            env=around, stdout=log, stderr=log)


def main():
    if not os.path.exists("/usr/share/dbus-1/services/org.a11y.Bus.service"):
        print("skipped, not installed: at-spi2-core")
        return 0
    artefacts = pathlib.Path(sys.argv[2])
    artefacts.mkdir(parents=True, exist_ok=True)
    reading, writing = os.pipe()
    screen = subprocess.Popen(["Xvfb", "-displayfd", str(writing), "-screen", "0",
                               os.environ.get("SCREEN", "1400x1000") + "x24", "-nolisten", "tcp", "-noreset"],
                              pass_fds=[writing], stderr=subprocess.DEVNULL)
    try:
        os.close(writing)
        os.environ["DISPLAY"] = ":" + os.read(reading, 100).decode().strip()
        run("setxkbmap", "se")  # letters that a keyboard lacks come late
        session = Session(pathlib.Path(sys.argv[1]), artefacts)
        try:
            session.go()
        except Failed as failure:
            session.faults.append(str(failure))
        (artefacts / "said.txt").write_text("\n".join(session.said) + "\n", encoding="utf-8")
    finally:
        screen.terminate()
        screen.wait()
    for fault in session.faults:
        print("FAILED:", fault)
    print(f"{len(session.said)} controls were met; what was said is in {artefacts}/said.txt")
    heard = session.said or os.environ.get("PICTURES") == "only"
    return 0 if heard and not session.faults else 1


if __name__ == "__main__":
    sys.exit(main())
