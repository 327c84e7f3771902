"""Writes the blue-noise mask of the library's ditherers, vlx_shared/blue_noise_table.inc: a square of
64 x 64 ranks that tiles without a seam, in which the dots of every grey level keep the most even
distance. Method: R. Ulichney, "The void-and-cluster method for dither array generation", Proc. SPIE
1913, 1993. The filter's weights are rounded to integers, so that every machine makes the same table.

Usage: make_blue_noise.py > vlx_shared/blue_noise_table.inc"""

import math

SIDE = 64
CELLS = SIDE * SIDE
SIGMA = 1.9
REACH = 10
WEIGHTS = [
    (dx, dy, round(1e6 * math.exp(-(dx * dx + dy * dy) / (2 * SIGMA * SIGMA))))
    for dy in range(-REACH, REACH + 1)
    for dx in range(-REACH, REACH + 1)
]


class Pattern:
    """Dots on the torus, and at every place the filtered sum of the dots around it."""

    def __init__(self):
        self.dot = [False] * CELLS
        self.sum = [0] * CELLS

    def put(self, place, on):
        self.dot[place] = on
        y, x = divmod(place, SIDE)
        for dx, dy, weight in WEIGHTS:
            near = (y + dy) % SIDE * SIDE + (x + dx) % SIDE
            self.sum[near] += weight if on else -weight

    def tightest_cluster(self):
        return max((p for p in range(CELLS) if self.dot[p]), key=self.sum.__getitem__)

    def largest_void(self):
        return min((p for p in range(CELLS) if not self.dot[p]), key=self.sum.__getitem__)


def random_places(count):
    state, places = 1, []
    while len(places) < count:
        state = (state * 1103515245 + 12345) % 2**31
        place = (state >> 8) % CELLS
        if place not in places:
            places.append(place)
    return places


def ranks():
    pattern = Pattern()
    start = random_places(CELLS // 10)
    for place in start:
        pattern.put(place, True)
    while True:  # move dots from the tightest clusters into the largest voids until nothing moves
        cluster = pattern.tightest_cluster()
        pattern.put(cluster, False)
        void = pattern.largest_void()
        pattern.put(void, True)
        if void == cluster:
            break
    dots = [place for place in range(CELLS) if pattern.dot[place]]
    rank = [0] * CELLS
    for number in reversed(range(len(dots))):
        cluster = pattern.tightest_cluster()
        rank[cluster] = number
        pattern.put(cluster, False)
    for place in dots:
        pattern.put(place, True)
    for number in range(len(dots), CELLS):
        void = pattern.largest_void()
        rank[void] = number
        pattern.put(void, True)
    return rank


print("// Made by scripts/make_blue_noise.py: 64 rows of 64 ranks, a rank divided by 16, as hex digits.")
table = [rank // 16 for rank in ranks()]
for row in range(SIDE):
    text = "".join(f"{value:02x}" for value in table[row * SIDE : (row + 1) * SIDE])
    print(f'"{text[:64]}"\n"{text[64:]}"')
