#!/usr/bin/env python3
"""No sentence of the code reaches a user past the string table.

Looks through what the helper is made of for string literals that read like a text (two words or
more, or anything that is handed to a widget) and are neither looked up nor an entry of the table.
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
FOLDERS = ("app", "creation", "access", "shortcuts", "installui", "settings", "watch", "platform")

# Where it stands, how it starts, and why it stays as it is.
EXCEPTIONS = {
    ("app/main.cpp", "usage: quennelhelper"): "the terminal's help is English",
    ("app/main.cpp", "quennelhelper: "): "for the terminal",
    ("platform/linux/ui/LazyUserInterface.cpp", "quennelhelper: "): "for the terminal",
    ("platform/linux/autostart/DesktopAutostart.cpp", "[Desktop Entry]"): "a file's contents",
    ("platform/linux/bus/BusURLEvents.cpp", "There is no action"): "for other programs",
    ("platform/linux/bus/BusApplicationActions.cpp", "There is no action"): "for other programs",
    ("platform/linux/scope/BookmarkRenewals.cpp", "renewal of "): "the purpose of a key",
    ("platform/linux/helper/BusHelperConnection.cpp", "no reason was given"): "for the terminal",
    ("platform/linux/watch/Inotify.cpp", "inotify wd:"): "the kernel's",
    ("platform/linux/tasks/LinuxUserScripts.cpp", "Library/"): "a path",
    ("platform/plist/PropertyListDocument.cpp", "<?xml"): "a file's contents",
    ("platform/values/PropertyList.cpp", "date out of range"): "for the terminal",
    ("installui/DragDropImageView.cpp", "(no name)"): "the window's title is fixed",
}

TOKEN = re.compile(
    r"""//[^\n]*|/\*.*?\*/|R"\((?P<raw>.*?)\)"|"(?P<text>(?:[^"\\\n]|\\.)*)"|'(?:[^'\\\n]|\\.)+'|\#include[^\n]*""",
    re.DOTALL | re.VERBOSE,
)
LOOKED_UP = re.compile(r"(localizedStringForKey|localizedText|textKey)\($")
SHOWN = re.compile(
    r"(setText|setTitle|setToolTip|setWindowTitle|setAccessibleName|setInformativeText|addButton|QLabel|"
    r"QPushButton|messageText =|informativeText =|\.title =|\.message =|\.prompt =)\s*\(?\{?$"
)
THROWN = re.compile(r"(_error|runtime_error|PropertyListError|logic_error)\($")


def literals(code):
    """(the code before it, the text) of every literal, joined where several stand in a row."""
    found = []
    end = None
    for token in TOKEN.finditer(code):
        text = token.group("text") if token.group("raw") is None else token.group("raw")
        if text is None:
            continue
        text = text.replace('\\"', '"')
        if end is not None and not code[end : token.start()].strip():
            found[-1] = (found[-1][0], found[-1][1] + text)
        else:
            before = code[max(0, token.start() - 80) : token.start()]
            found.append((before.rstrip(), text))
        end = token.end()
    return found


def known_texts():
    template = (ROOT / "resources/po/quennelhelper.pot").read_text()
    texts = re.findall(r'^msgid ((?:".*"\n)+)', template, re.MULTILINE)
    return {re.sub(r'"\n"|^"|"\n$', "", text).replace('\\"', '"') for text in texts}


def is_exception(name, text):
    return any(name == file and text.startswith(start) for file, start in EXCEPTIONS)


def is_text(before, text):
    if LOOKED_UP.search(before) or THROWN.search(before):
        return False
    return bool(re.search(r"[A-Za-z]{2,} [a-zA-Z]", text)) or (
        bool(SHOWN.search(before)) and bool(re.search(r"[A-Za-z]{2,}", text))
    )


def main():
    known = known_texts()
    strays = []
    for folder in FOLDERS:
        for path in sorted((ROOT / folder).rglob("*")):
            if path.suffix not in (".cpp", ".h"):
                continue
            name = str(path.relative_to(ROOT))
            for before, text in literals(path.read_text()):
                if is_text(before, text) and text not in known and not is_exception(name, text):
                    strays.append(f"{name}: “{text}” is in no string table")
    print("\n".join(strays))
    return 1 if strays else 0


if __name__ == "__main__":
    sys.exit(main())
