"""qt-licences.py SOURCE FOLDER NAME

The work of others that Qt's libraries for Windows hold, by the lists that lie in Qt's source: copies
the licences into FOLDER and prints what is whose, naming FOLDER as NAME."""
import json
import shutil
import sys
from pathlib import Path

# What is built for other systems, into other libraries or not at all.
ELSEWHERE = ["3rdparty/android", "3rdparty/angle", "3rdparty/forkfd", "3rdparty/gradle",
             "3rdparty/wasm", "3rdparty/xcb", "corelib/kernel", "dbus", "plugins/platforms/cocoa",
             "testlib/3rdparty"]


def works(source):
    for path in sorted(source.rglob("qt_attribution.json")):
        if str(path.parent.relative_to(source)) not in ELSEWHERE:
            entries = json.loads(path.read_text(encoding="utf-8"), strict=False)
            for entry in entries if isinstance(entries, list) else [entries]:
                yield path.parent, entry


def copy_licences(place, work, folder):
    files = work.get("LicenseFiles") or [work[key] for key in ["LicenseFile"] if key in work]
    for file in files:
        copy = folder / f"{work['Id']}-{Path(file).stem}.txt"
        shutil.copyfile(place / file, copy)
        yield copy.name


def main(source, folder, name):
    sys.stdout.reconfigure(encoding="utf-8")
    for place, work in works(Path(source, "src")):
        print(f"  {work['Name']} {work.get('Version', '')}".rstrip())
        print(f"    {work['License']}")
        for line in work["Copyright"].splitlines():
            print(f"    {line}")
        for copy in copy_licences(place, work, Path(folder)):
            print(f"    {name}/{copy}")


main(*sys.argv[1:])
