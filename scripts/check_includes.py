#!/usr/bin/env python3
"""Checks that every include points downwards through the layers, and that the core includes nothing
but itself and the standard library."""
import pathlib
import re
import sys

LAYERS = {
    "base": set(),
    "platform": {"base"},
    "decoder": {"platform", "base"},
    "settings": {"platform", "base"},
    "playlist": {"settings", "platform", "base"},
    "engine": {"decoder", "playlist", "platform", "base"},
    "toolkit": {"platform", "base"},
    "panels": {"toolkit", "engine", "playlist", "settings", "platform", "base"},
    "app": {"panels", "toolkit", "engine", "playlist", "settings", "platform", "base"},
}
# The floors of panels/, from the ground up.  A file includes its own header and those below its floor.
PANELS = [
    {"widget_indices", "application_state"},
    {"panel_tools", "visualisers"},
    {"equaliser_presets", "menus", "top_bar"},
    {"preset_name_edit"},
    {"equaliser_curve"},
    {"main_page", "playlist_page", "mixer_page", "window_page", "empty_pages"},
    {"pages"},
]
FLOORS = {name: number for number, names in enumerate(PANELS) for name in names}
BACKENDS = ("platform/desktop/", "platform/headless/", "platform/posix/")
STANDARD = re.compile(r"^[a-z_0-9]+$")

root = pathlib.Path(__file__).resolve().parent.parent
wrong = []
for layer, allowed in LAYERS.items():
    for path in sorted((root / layer).rglob("*")):
        if path.suffix not in (".h", ".cpp"):
            continue
        name = path.relative_to(root).as_posix()
        backend = name.startswith(BACKENDS)
        for number, line in enumerate(path.read_text().splitlines(), 1):
            match = re.match(r'#include ([<"])([^>"]+)', line)
            if not match:
                continue
            quote, target = match.groups()
            if quote == '"':
                top = target.split("/")[0]
                down = top == layer or top in allowed
                if down and layer == top == "panels" and path.stem != pathlib.Path(target).stem:
                    down = FLOORS[pathlib.Path(target).stem] < FLOORS[path.stem]
                if not down or (not backend and target.startswith(BACKENDS)):
                    wrong.append(f"{name}:{number}: {target} does not lie below it")
            elif not backend and not STANDARD.match(target):
                wrong.append(f"{name}:{number}: <{target}> is not of the standard library")
print("\n".join(wrong) or "includes: all arrows point down")
sys.exit(bool(wrong))
