"""Reads Zellick's accessible tree over AT-SPI, presses "Count up" through it and reads the count.

Run by run_atspi.sh inside its own session bus and X server; exits non-zero on any miss.
"""
import sys
import time

import pyatspi

# Every control a screen reader must find: (role, name, checked or None).
EXPECTED = [
    ("push button", "Count up", None),
    ("push button", "Count down", None),
    ("push button", "Reset", None),
    ("radio button", "Memory A", True),
    ("radio button", "Memory B", False),
    ("radio button", "Memory C", False),
    ("push button", "More", None),
    ("label", "Count 0", None),
    ("label", "Clock 00:00:00", None),
    ("label", "Rate 0/min", None),
]


def find_app(deadline):
    while time.time() < deadline:
        for app in pyatspi.Registry.getDesktop(0):
            if app is not None and app.name == "Zellick":
                return app
        time.sleep(0.2)
    return None


def nodes(root):
    out = []

    def walk(node):
        out.append(node)
        for child in node:
            if child is not None:
                walk(child)

    walk(root)
    return out


def seen(app):
    found = {}
    for n in nodes(app):
        found[(n.getRoleName(), n.name)] = (n, n.getState().contains(pyatspi.STATE_CHECKED))
    return found


def press(app, name):
    """Presses the showing button called `name`; False when there is none."""
    for n in nodes(app):
        if n.name == name and n.getRoleName() == "push button" and \
                n.getState().contains(pyatspi.STATE_SHOWING):
            action = n.queryAction()
            for i in range(action.nActions):
                if action.getName(i) == "Press":
                    return action.doAction(i)
    return False


def main():
    app = find_app(time.time() + 20)
    if app is None:
        print("no accessible application named Zellick")
        return 1
    failures = []
    found = {}
    deadline = time.time() + 10
    while time.time() < deadline:  # the tree fills in as the window shows
        found = seen(app)
        if all((role, name) in found for role, name, _ in EXPECTED):
            break
        time.sleep(0.2)
    for role, name, checked in EXPECTED:
        if (role, name) not in found:
            failures.append(f"missing {role} {name!r}")
        elif checked is not None and found[(role, name)][1] != checked:
            failures.append(f"{name!r} checked is {found[(role, name)][1]}, not {checked}")
    if ("push button", "Count up") in found:
        button = found[("push button", "Count up")][0]
        action = button.queryAction()
        names = [action.getName(i) for i in range(action.nActions)]
        if "Press" not in names:
            failures.append(f"'Count up' offers {names}, not Press")
        else:
            for _ in range(12):
                action.doAction(names.index("Press"))
            deadline = time.time() + 5
            while time.time() < deadline and ("label", "Count 12") not in seen(app):
                time.sleep(0.1)
            if ("label", "Count 12") not in seen(app):
                counts = [n for (r, n) in seen(app) if r == "label" and n.startswith("Count")]
                failures.append(f"after twelve presses the count reads {counts}")
    # A question and the More screen: read, and pressed through the reader.
    steps = [
        ("Reset", [("alert", "RESET COUNTER"), ("push button", "Yes"), ("push button", "No")]),
        ("No", [("label", "Count 12")]),
        ("More", [("push button", "Email Comments"), ("push button", "Review Zellick"),
                  ("push button", "Like Orvanta on Facebook"), ("push button", "Back")]),
        ("Back", []),
    ]
    for name, expected in steps:
        if failures:
            break
        if not press(app, name):
            failures.append(f"no {name!r} to press")
            break
        deadline = time.time() + 5
        while time.time() < deadline and not all(e in seen(app) for e in expected):
            time.sleep(0.1)
        failures += [f"after pressing {name!r}, no {r} {n!r}" for r, n in expected
                     if (r, n) not in seen(app)]
    deadline = time.time() + 5
    while not failures and ("push button", "Email Comments") in seen(app):
        if time.time() > deadline:
            failures.append("the More screen's rows are still there after Back")
        time.sleep(0.1)
    for f in failures:
        print(f)
    if not failures:
        print(f"{len(EXPECTED)} controls found with their names and roles; twelve presses read "
              "'Count 12'; the reset question and the More screen read and pressed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
