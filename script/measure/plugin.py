"""What the plug-in is: its size, and what it needs."""
import os
import re
import subprocess
import tempfile

from .rows import Row

# What a unit has anyway: Qt, the platform's library, the C++ and C libraries.
KNOWN = re.compile(r"libQt5(Core|Gui|Widgets|SerialPort)\.so|libheadunit_services\.so|"
                   r"lib(stdc\+\+|gcc_s|c|m)\.so|ld-linux")


def rows(build, _quick):
    module = os.path.join(build, "lib/libtestmode.so")
    with tempfile.TemporaryDirectory() as folder:
        stripped = os.path.join(folder, "stripped.so")
        subprocess.run(["objcopy", "--strip-all", module, stripped], check=True)
        size = os.path.getsize(stripped)
    dynamic = subprocess.run(["readelf", "--dynamic", module], check=True, capture_output=True,
                             text=True).stdout
    needed = re.findall(r"\(NEEDED\).*\[(.*)\]", dynamic)
    unknown = [name for name in needed if not KNOWN.match(name)]
    return [
        Row("plug-in, stripped", size / 1024, "KiB", most=400, quick_most=1000),
        Row("libraries beside Qt, the platform and C++", len(unknown), "", most=0,
            remark=", ".join(unknown) or f"needs {len(needed)} in all"),
    ]
