"""mend-winex11.py FROM TO: Wine's display driver, so that a Direct3D picture in a child window shows.

The distribution's Wine 8 clears the X window that X11DRV_GetDC falls back to when the child has
none of its own: drawing reports success and the screen stays as it was. The instructions of that
assignment are replaced by one that keeps the window. Status 1 when FROM has no such place.
"""
import re
import sys

# mov rax,[rsp+0x38]; cmp rax,r14; jne ...; jmp ...
ASSIGNMENT = re.compile(rb"\x48\x8b\x44\x24\x38\x4c\x39\xf0\x0f\x85....\xeb.", re.DOTALL)
KEEP = b"\x4c\x89\x74\x24\x38" + 9 * b"\x90"  # mov [rsp+0x38],r14; nop...

with open(sys.argv[1], "rb") as driver:
    code = bytearray(driver.read())
places = [found.start() for found in ASSIGNMENT.finditer(code)]
if len(places) != 1:
    sys.exit(1)
code[places[0] : places[0] + len(KEEP)] = KEEP
with open(sys.argv[2], "wb") as driver:
    driver.write(code)
