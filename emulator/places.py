"""Where things are on the screen, and by what a page is known: measured once, for two screens.

A mark is one of
    (colour, x, y)               the pixel has this colour of COLOURS
    ("ink", x, y, w, h, least)   the rectangle holds at least so many dark pixels: text, a picture
    ("blank", x, y, w, h)        the rectangle holds none
    ("red", x, y, w, h, least)   the rectangle holds at least so many red pixels: an error's title
"""

COLOURS = {"page": (239, 239, 239), "wizard": (230, 230, 230), "group": (226, 226, 226),
           "white": (255, 255, 255), "black": (0, 0, 0)}
TOLERANCE = 2

WIDE = (800, 480)
SMALL = (480, 272)

PLACES = {
    WIDE: {
        "configure": (49, 430), "start": (49, 80),
        "back": (190, 451), "cancel": (399, 451), "next": (607, 451),
        "change": (652, 188), "edit 1": (652, 188), "edit 2": (652, 224), "edit 3": (652, 260),
        "1": (168, 155), "2": (314, 155), "3": (460, 155), "left": (620, 155),
        "4": (168, 242), "5": (314, 242), "6": (460, 242), "right": (620, 242),
        "7": (168, 328), "8": (314, 328), "9": (460, 328), "pad cancel": (620, 328),
        ".": (168, 414), "0": (314, 414), "backspace": (460, 414), "ok": (620, 414),
        "restart now": (400, 422), "box ok": (530, 302),
        "start calibration": (400, 91), "accept": (400, 177), "exit calibration": (400, 263),
        "cross 1": (50, 50), "cross 2": (750, 50), "cross 3": (750, 430), "cross 4": (50, 430),
        "cross 5": (400, 240),
    },
    SMALL: {
        "configure": (39, 233), "cancel": (239, 248), "next": (368, 248), "change": (384, 68),
    },
}

MARKS = {
    WIDE: {
        "start page": [("ink", 200, 200, 400, 55, 1500), ("blank", 19, 400, 60, 60),
                       ("page", 400, 100), ("page", 400, 400)],
        "preview": [("ink", 19, 400, 60, 60, 400), ("ink", 180, 190, 440, 60, 3000),
                    ("page", 400, 400)],
        "mode": [("wizard", 84, 240), ("white", 580, 188), ("group", 580, 224),
                 ("group", 400, 320)],
        "addresses": [("wizard", 84, 240), ("white", 580, 188), ("white", 580, 224),
                      ("white", 580, 260), ("group", 400, 320)],
        "name servers": [("wizard", 84, 240), ("white", 580, 188), ("white", 580, 224),
                         ("group", 580, 260), ("group", 400, 320)],
        "summary": [("wizard", 84, 240), ("white", 400, 350), ("ink", 560, 440, 100, 24, 100)],
        "nothing to save": [("wizard", 84, 240), ("wizard", 400, 350),
                            ("ink", 560, 440, 100, 24, 100)],
        "calibration after": [("page", 84, 240), ("white", 105, 350), ("ink", 330, 252, 140, 24, 60),
                              ("blank", 330, 166, 140, 24)],
        "pad": [("ink", 158, 140, 22, 30, 30), ("ink", 590, 400, 60, 30, 60)],
        "restart": [("page", 84, 240), ("ink", 350, 80, 190, 260, 3000),
                    ("ink", 320, 412, 160, 22, 100)],
        "calibration": [("page", 84, 240), ("white", 105, 350), ("ink", 330, 80, 140, 24, 60),
                        ("blank", 330, 166, 140, 24)],
        "verdict": [("page", 84, 240), ("white", 105, 440), ("ink", 330, 166, 140, 24, 60),
                    ("blank", 330, 80, 140, 24)],
        "error box": [("red", 240, 100, 320, 100, 1500)],
    },
    SMALL: {
        "start page": [("ink", 100, 100, 280, 40, 800), ("blank", 14, 210, 50, 50)],
        "preview": [("ink", 14, 208, 50, 52, 300), ("ink", 40, 95, 400, 50, 3000)],
        "mode": [("wizard", 46, 140), ("white", 320, 68), ("group", 320, 104)],
    },
}


def cross_marks(number):
    """By what the page of the cross from 1 to 5 is known; on the wide screen alone."""
    x, y = PLACES[WIDE][f"cross {number}"]
    marks = [("white", 600, 130), ("white", 200, 350), ("ink", x - 12, y - 12, 25, 25, 30)]
    for other in range(1, 6):
        if other != number:
            left, top = PLACES[WIDE][f"cross {other}"]
            marks.append(("blank", left - 12, top - 12, 25, 25))
    return marks


for index in range(1, 6):
    MARKS[WIDE][f"cross {index}"] = cross_marks(index)
