#!/usr/bin/env python3
"""Draws icons/<number>.svg, one for every image number that categories and kinds of problems name.

A glyph is a path on a grid of 24 units, drawn as a line in the colour of the text around it. The
picture of a kind of problem is its family's glyph with a badge in the lower right corner, for which
the glyph makes room. Run it after a change to the tables; the files are committed.
"""

import pathlib

PAPER = "M13.5 2.5H6a1.5 1.5 0 0 0-1.5 1.5v16A1.5 1.5 0 0 0 6 21.5h12a1.5 1.5 0 0 0 1.5-1.5V8.5zM13.5 2.5v6h6"

GLYPHS = {
    "cube": "M12 2.5 20 7v10l-8 4.5L4 17V7zM4 7l8 4.7L20 7M12 11.7v9.8",
    "chip": "M7 6.5h10v11H7zM10 10h4v4h-4zM9.5 6.5v-4M14.5 6.5v-4M9.5 21.5v-4M14.5 21.5v-4"
            "M7 9.5H3M7 14.5H3M21 9.5h-4M21 14.5h-4",
    "window": "M3 4.5h18v15H3zM3 9h18M6 6.8h.1M8.6 6.8h.1",
    "picture": "M3 4h18v16H3zM3 17l5-5 4 4 3-3 6 6M15.6 8.6a1.2 1.2 0 1 0 .1 0",
    "book": "M12 6C10 4.3 6.5 3.8 2.5 4v14c4-.2 7.5.3 9.5 2 2-1.7 5.5-2.2 9.5-2V4"
            "C17.5 3.8 14 4.3 12 6zM12 6v14",
    "palette": "M3.5 3.5h7v7h-7zM13.5 3.5h7v7h-7zM3.5 13.5h7v7h-7zM13.5 13.5h7v7h-7z",
    "funnel": "M3 4h18l-7 8.5V20l-4-2.5v-5z",
    "badge": "M4 6.5h16v13H4zM10 6.5v-3h4v3M8.5 12a1.8 1.8 0 1 0 .1 0M6.3 17c.5-1.5"
             " 4-1.5 4.5 0M14 12h3.5M14 15.5h3.5",
    "socket": "M7 8.5a3.5 3.5 0 1 0 .1 0zM10.5 12H15M15 7h6v10h-6z",
    "sockets": "M6.5 8.5a3.5 3.5 0 1 0 .1 0zM10 12h4M17.5 8.5a3.5 3.5 0 1 0 .1 0z",
    "socket-book": "M12 2.5a3 3 0 1 0 .1 0zM12 8.5V11M12 13c-2-1.5-5-2-9-1.8v8.3"
                   "c4-.2 7 .3 9 1.8 2-1.5 5-2 9-1.8v-8.3c-4-.2-7 .3-9 1.8zM12 13v8",
    "paper-book": PAPER + "M12 12.5c-1-.8-2.5-1-4.5-1v5.5c2 0 3.5.2 4.5 1 1-.8 2.5-1"
                  " 4.5-1v-5.5c-2 0-3.5.2-4.5 1zM12 12.5v5.5",
    "folder-book": "M2.5 19.5v-15h7l2 2.5h10v12.5zM12 11.5c-1-.8-2.5-1-4.5-1v5.3"
                   "c2 0 3.5.2 4.5 1 1-.8 2.5-1 4.5-1v-5.3c-2 0-3.5.2-4.5 1z",
    "book-question": "M5 3.5h14v17H7a2 2 0 0 1-2-2zM5 18.5a2 2 0 0 1 2-2h12M9.8 7.7"
                     "a2.2 2.2 0 1 1 3.2 2c-.7.4-1 .7-1 1.5M12 13.5v.1",
    "tag": "M3 3.5h8.5l9 9-8 8-9.5-9.5zM7.5 7a.8.8 0 1 0 .1 0",
    "braces": "M9 3.5H8A2.5 2.5 0 0 0 5.5 6v3.5L3 12l2.5 2.5V18A2.5 2.5 0 0 0"
              " 8 20.5h1M15 3.5h1A2.5 2.5 0 0 1 18.5 6v3.5L21 12l-2.5 2.5V18"
              "A2.5 2.5 0 0 1 16 20.5h-1M12 9.5v.1M12 14.5v.1",
    "menu": "M4 3h13v18H4zM7 7h7M7 10.5h7M7 14h4M7 17.5h4M20 6v12",
    "key": "M7.5 8.5a4.5 4.5 0 1 0 .1 0zM10.7 9.8 20 2.5M16 5.7l3 3.8M13 8l2 2.5",
    "paper-run": PAPER + "M10 11.5v6l5-3z",
    "paper-dots": PAPER + "M8.2 15.5h.1M12 15.5h.1M15.8 15.5h.1",
    "paper-cube": PAPER + "M12 10.5l3.8 2v4.2l-3.8 2-3.8-2v-4.2zM8.2 12.5l3.8 2 3.8-2"
                  "M12 14.5v4.2",
    "paper-picture": PAPER + "M7.5 18l3-3.5 2 2 1.5-1.5 2.5 3zM9.3 11a.9.9 0 1 0 .1 0",
    "paper-menu": PAPER + "M8 12h8M8 15h8M8 18h5",
    "paper-braces": PAPER + "M10.3 11.5c-1.3 0-1.3.8-1.3 1.5 0 1-.2 1.7-1 1.7.8 0 1 .7 1"
                    " 1.7 0 .7 0 1.5 1.3 1.5M13.7 11.5c1.3 0 1.3.8 1.3 1.5 0 1 .2"
                    " 1.7 1 1.7-.8 0-1 .7-1 1.7 0 .7 0 1.5-1.3 1.5",
    "papers-types": "M8 6.5V4a1.5 1.5 0 0 1 1.5-1.5h6L20 7v9a1.5 1.5 0 0 1-1.5 1.5"
                    "H16M15 2.5V7.5h5M4 6.5h12v15H4zM7 11h6M7 14h6M7 17h3.5",
    "signpost": "M11 2.5v19M8 21.5h6M5 5h12l3 2.8-3 2.7H5zM19 13H8l-3 2.3L8 17.5h11z",
    "play": "M12 3a9 9 0 1 0 .1 0zM10 8v8l6-4z",
    "rocket": "M12 2.5c3.5 2.5 5 6 4.5 11.5l-1.5 2H9l-1.5-2C7 8.5 8.5 5 12 2.5z"
              "M12 8a1.5 1.5 0 1 0 .1 0zM7.6 11.5 4.5 14.5V19l4-3M16.4 11.5l3.1 3V19l-4-3"
              "M12 18.5v3",
    "task": "M4 5h16v15.5H4zM4 9.5h16M8.5 2.5V6M15.5 2.5V6M12 12v3.5l2.5 1.3",
    "card": "M3 3v18.5M3 6h18v10.5H3M6.5 16.5v3h3v-3M12.5 16.5v3h3v-3M7 9.5h4V13H7z"
            "M14.5 9.5h3M14.5 12.5h3",
    "wall": "M3 4h18v16H3zM3 9.3h18M3 14.7h18M9 4v5.3M15 4v5.3M12 9.3v5.4M6.5 9.3v5.4"
            "M17.5 9.3v5.4M9 14.7V20M15 14.7V20",
    "shield": "M12 2.5 4 5.5v6c0 5 3.3 8.3 8 10 4.7-1.7 8-5 8-10v-6zM4.2 10h15.6M5.7 15.5"
              "h12.6M12 3v7M8.5 10v5.5M15.5 10v5.5M12 15.5v6",
    "letter": "M3.5 20 10.5 3.5h2l7 16.5M6.2 14h10.6",
    "letters": "M2 19 7.5 5H8.5L14 19M4 14.5h8M19 12a3.3 3.3 0 1 0 .1 0zM22.3 11.5V19",
    "question": "M12 2.5a9.5 9.5 0 1 0 .1 0zM9.2 9.5a2.8 2.8 0 1 1 4.2 2.4"
                "c-1 .6-1.4 1.2-1.4 2.3M12 17.3v.1",
    "paper-question": PAPER + "M9.8 13a2.2 2.2 0 1 1 3.3 1.9c-.8.5-1.1.9-1.1 1.7M12 19v.1",
    "globe-question": "M12 2.5a9.5 9.5 0 1 0 .1 0zM2.5 12h4M17.5 12h4M7 4.2C5.6 9 5.6 15 7 19.8"
                      "M17 4.2C18.4 9 18.4 15 17 19.8M9.9 9.8a2.2 2.2 0 1 1 3.3 1.9"
                      "c-.8.5-1.1.9-1.1 1.7M12 16.2v.1",
    "paper-torn": "M13.5 2.5H6A1.5 1.5 0 0 0 4.5 4v16l3-2 3 2.5 3-2.5 3 2.5 3-2V8.5z"
                  "M13.5 2.5v6h6M9.8 10.5a2.2 2.2 0 1 1 3.3 1.9c-.8.5-1.1.9-1.1 1.7",
    "clock": "M12 2.5a9.5 9.5 0 1 0 .1 0zM12 7v5.3l3.5 2",
    "history": "M3.5 9.5A9 9 0 1 1 3 13M3 4v5.5h5.5M12 7.5v5l3.5 2",
    "settings-file": PAPER + "M8 11.5h1.5v6H8M16 11.5h-1.5v6H16",
    "settings-files": PAPER + "M8 12h8M10 10.7v2.6M8 15h8M14 13.7v2.6M8 18h8M11 16.7v2.6",
    "papers": "M8.5 2.5h8L20 6v10.5H8.5zM16 2.5V6.5h4M8.5 7H4v14.5h11.5v-5",
    "papers-hand": "M9 2.5h7.5L20 6v8.5H9zM16 2.5V6.5h4M4 9v12.5h11M4 9h2M12 8h2M12 11h5"
                   "M18 18a1.5 1.5 0 1 0 .1 0zM15 21.5c.4-1.4 5.6-1.4 6 0",
    "speaker": "M3 9v6h4.5l6 5V4l-6 5zM17 9c1.7 1.5 1.7 4.5 0 6",
    "speaker-loud": "M3 9v6h4l5.5 4.5v-15L7 9zM15.5 9c1.6 1.5 1.6 4.5 0 6M18 6.5c3 2.8 3 8.2"
                    " 0 11",
    "film": "M3 4.5h18v15H3zM7.5 4.5v15M16.5 4.5v15M3 9.5h4.5M3 14.5h4.5M16.5 9.5"
            "H21M16.5 14.5H21M7.5 12h9",
    "browser": "M3 4h18v16H3zM3 8.5h18M6 6.3h.1M8.6 6.3h.1M12 11v6M9 14h6",
    "puzzle": "M4 7.5h5c-1.8-5 4.8-5 3 0h5v5c5-1.8 5 4.8 0 3v5.5h-5c1.8-4.5-4.8-4.5-3 0H4"
              "v-5.5c4.5 1.8 4.5-4.8 0-3z",
    "package": "M3 7.5 12 3l9 4.5v9L12 21l-9-4.5zM3 7.5l9 4.5 9-4.5M12 12v9M7.5 5.2l9 4.6v3.7",
    "disc": "M4 4.5h16v11H4zM9 19.5h6M12 15.5v4M12 7v4.5M9.7 9.5 12 11.8l2.3-2.3",
    "slider": "M4 6h6M14 6h6M12 4a2 2 0 1 0 .1 0zM4 12h2M10 12h10M8 10a2 2 0 1 0 .1 0zM4 18h9",
    "window-sliders": "M3 3.5h18v17H3zM3 7.5h18M6.5 11.5h11M10 10v3M6.5 16h11M14.5 14.5v3",
    "database": "M12 3c4.7 0 8 1.2 8 2.8s-3.3 2.7-8 2.7-8-1.1-8-2.7S7.3 3 12 3zM4 5.8v12.5"
                "C4 20 7.3 21 12 21s8-1 8-2.7V5.8M4 12c0 1.7 3.3 2.8 8 2.8s8-1.1 8-2.8",
    "database-plug": "M10.5 2.5c4 0 7 1 7 2.5s-3 2.5-7 2.5-7-1-7-2.5 3-2.5 7-2.5zM3.5 5v12"
                     "c0 1.5 3 2.5 7 2.5M17.5 5v4M3.5 11c0 1.5 3 2.5 7 2.5M15 12v3M20 12v3"
                     "M13 15h9v1.5a4 4 0 0 1-4 4h-1a4 4 0 0 1-4-4zM17.5 20.5V22.5",
}

MISSING = "M15.7 15.7l5.8 5.8M21.5 15.7l-5.8 5.8"
EMPTY = "M18.6 15.6a3 3 0 1 0 .1 0z"
UNKNOWN = "M16.5 16.5a2.2 2.2 0 1 1 3.2 2c-.7.4-1 .8-1 1.3M18.7 22.3v.1"
BROKEN = "M18.7 14.8v4.2M18.7 22v.1"

ICONS = {
    # Program components
    5000: ("chip", MISSING), 5001: ("window", MISSING), 5002: ("cube", MISSING),
    5003: ("picture", MISSING), 5004: ("book", MISSING), 5005: ("badge", MISSING),
    5006: ("palette", MISSING), 5007: ("funnel", MISSING), 5008: ("key", EMPTY),
    5009: ("tag", EMPTY), 5010: ("window", BROKEN), 5011: ("menu", MISSING),
    5012: ("braces", UNKNOWN), 5013: ("picture", EMPTY), 5014: ("socket", MISSING),
    5015: ("sockets", MISSING), 5016: ("socket-book", MISSING), 5017: ("paper-book", MISSING),
    5018: ("book", EMPTY), 5019: ("folder-book", MISSING), 5020: ("book-question", EMPTY),
    5021: ("cube", None),
    # Program paths
    6000: ("signpost", MISSING), 6001: ("signpost", EMPTY), 6002: ("signpost", UNKNOWN),
    6003: ("signpost", None),
    # Autostart
    7000: ("play", MISSING), 7001: ("task", MISSING), 7002: ("rocket", None),
    # Device drivers
    8000: ("card", MISSING), 8001: ("card", EMPTY), 8002: ("card", None),
    # File types
    9000: ("paper-run", MISSING), 9001: ("paper-dots", MISSING), 9002: ("paper-cube", MISSING),
    9003: ("paper-picture", MISSING), 9004: ("paper-menu", MISSING),
    9005: ("paper-braces", UNKNOWN), 9006: ("paper-picture", EMPTY), 9007: ("paper-dots", EMPTY),
    9008: ("paper-menu", EMPTY), 9009: ("papers-types", None),
    # Firewall
    10000: ("wall", MISSING), 10001: ("shield", None),
    # Fonts
    11000: ("letter", MISSING), 11001: ("letter", BROKEN), 11002: ("letters", None),
    # Help files
    12000: ("paper-question", MISSING), 12001: ("globe-question", MISSING),
    12002: ("paper-torn", BROKEN), 12003: ("question", None),
    # History lists
    13000: ("clock", MISSING), 13001: ("history", None),
    # Configuration files
    14000: ("settings-file", MISSING), 14001: ("settings-files", None),
    # Shared files
    16000: ("papers", MISSING), 16001: ("papers-hand", None),
    # Sounds
    17000: ("speaker", MISSING), 17001: ("speaker-loud", None),
    # Program add-ons
    18000: ("film", MISSING), 18001: ("browser", MISSING), 18002: ("puzzle", None),
    # Installed programs, their settings, database drivers
    19000: ("disc", MISSING), 19001: ("package", None),
    19100: ("slider", MISSING), 19101: ("window-sliders", None),
    19200: ("database", MISSING), 19201: ("database-plug", None),
}


def line(path):
    return f'<path d="{path}"/>'


def drawing(number, glyph, badge):
    if badge is None:
        return line(GLYPHS[glyph]) + "\n"
    # The glyph without a round corner, which the badge fills.
    room = "M0 0h24v24H0zM18.6 13.1a5.5 5.5 0 1 0 .01 0z"
    return (
        f'<clipPath id="room{number}"><path clip-rule="evenodd" d="{room}"/></clipPath>\n'
        f'<g clip-path="url(#room{number})">{line(GLYPHS[glyph])}</g>\n'
        f"{line(badge)}\n"
    )


def main():
    folder = pathlib.Path(__file__).resolve().parent.parent / "icons"
    folder.mkdir(exist_ok=True)
    for number, (glyph, badge) in ICONS.items():
        content = drawing(number, glyph, badge)
        (folder / f"{number}.svg").write_text(
            '<svg xmlns="http://www.w3.org/2000/svg" width="24" height="24" viewBox="0 0 24 24"'
            ' fill="none"\n  stroke="currentColor" stroke-width="1.7" stroke-linecap="round"'
            ' stroke-linejoin="round">\n' + content + "</svg>\n",
            encoding="utf-8",
        )


if __name__ == "__main__":
    main()
