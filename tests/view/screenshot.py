#!/usr/bin/env python3
"""Makes a picture of a page of gsl-sweep --view.

usage: screenshot.py PAGE.html PICTURE.png [WIDTH HEIGHT [light|dark]]
"""

import pathlib
import sys

import chromium


def main(page, picture, width="1280", height="800", theme="light"):
    with chromium.Browser() as browser:
        browser.size(int(width), int(height))
        browser.prefer(theme)
        browser.open(page)
        pathlib.Path(picture).write_bytes(browser.picture())
        if browser.problems:
            sys.exit(f"{page}: {browser.problems}")


if __name__ == "__main__":
    main(*sys.argv[1:])
