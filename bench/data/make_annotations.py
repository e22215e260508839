#!/usr/bin/env python3
"""Prints 200 annotations of all kinds for a picture of 1920 x 1080 points, the same ones each time:
python3 bench/data/make_annotations.py > bench/data/desktop.png.tamrik.json"""

import json
import math
import random
import uuid

WIDTH, HEIGHT = 1920, 1080
COUNT = 200
# How often each is used.
KINDS = {"arrow": 5, "text": 4, "rect": 4, "counter": 4, "highlight": 3, "freehand": 3, "redact": 3,
         "ellipse": 2, "line": 2}
COLORS = ["#FF3B30", "#FF9500", "#FFCC00", "#34C759", "#0A84FF", "#BF5AF2", "#000000", "#FFFFFF"]
TEXTS = ["Wrong total?", "here", "see ticket 2041", "move this to the left", "ok"]
FONT_SIZES = {2: 14, 4: 19, 7: 26}

chance = random.Random(20261121)


def within(low, high):
    return round(chance.uniform(low, high) * 2) / 2  # a mouse reports halves at 2 pixels a point


def stroke(start, kind):
    """As a hand draws it: a point for every mouse event."""
    wave, height = chance.uniform(20, 60), 3 if kind == "highlight" else chance.uniform(10, 40)
    length = chance.randrange(40, 160)
    return [[start[0] + 2 * i, round(2 * (start[1] + height * math.sin(i / wave * 6))) / 2]
            for i in range(length)]


def annotation(number):
    kind = chance.choices(list(KINDS), weights=KINDS.values())[0]
    width = chance.choice([2, 4, 7])
    start = [within(40, WIDTH - 360), within(40, HEIGHT - 240)]
    end = [start[0] + within(30, 320), start[1] + within(20, 200)]
    result = {"id": str(uuid.UUID(int=chance.getrandbits(128), version=4)).upper(), "kind": kind,
              "start": start, "end": end}
    if kind in ("freehand", "highlight"):
        result["path"] = stroke(start, kind)
        result["end"] = result["path"][-1]
    if kind == "text":
        result.update(end=start, text=chance.choice(TEXTS), fontSize=FONT_SIZES[width])
    if kind == "counter":
        result.update(end=start, number=number)
    return {**result, "colorHex": chance.choice(COLORS), "lineWidth": width}


print(json.dumps({"version": 1, "annotations": [annotation(i + 1) for i in range(COUNT)]},
                 separators=(",", ":")))
