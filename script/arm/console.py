"""A prompt in the machine, on the terminal that this program was started from."""
import os
import sys

from . import steps

# The terminal is the machine's console hvc0; Ctrl-C goes there.
TERMINAL = ["-chardev", "stdio,id=prompt,signal=off", "-device", "virtconsole,chardev=prompt"]

FOREVER = 10**9


def attach(unit):
    """Boots the machine and stays in it until its shell ends."""
    if not sys.stdin.isatty():
        raise SystemExit("arm-unit: --shell wants a terminal")
    columns, rows = os.get_terminal_size()
    with unit.powered(extra=TERMINAL, interactive=True) as machine:
        binaries = machine.tree / "build/armhf/bin"
        steps.say(f"the programs are in {binaries}; what is left in /results stays; exit ends")
        machine.start(f"stty -F /dev/hvc0 rows {rows} cols {columns}; cd /results; "
                      f"PATH='{binaries}':$PATH TERM='{os.environ.get('TERM', 'linux')}' "
                      "exec setsid -c bash -i <>/dev/hvc0 >&0 2>&0", FOREVER).wait()
    return 0
