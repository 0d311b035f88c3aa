"""The machine by hand: a prompt on the terminal that this program was started from, or a screen."""
import contextlib
import os
import socket
import sys
import termios

from . import steps

# The terminal is the machine's console hvc0; Ctrl-C goes there.
TERMINAL = ["-chardev", "stdio,id=prompt,signal=off", "-device", "virtconsole,chardev=prompt"]

FOREVER = 10**9

# The screen is that of the bench's own VNC server, which the emulator hands on to this PC alone.
LOOPBACK = "127.0.0.1"
INSIDE = "10.0.2.15"
VNC_PORT = 5900
SCREEN = "1440x900"


def attach(unit):
    """Boots the machine and stays in it until its shell ends."""
    if not sys.stdin.isatty():
        raise SystemExit("arm-unit: --shell wants a terminal")
    columns, rows = os.get_terminal_size()
    with terminal_kept(), unit.powered(extra=TERMINAL, interactive=True) as machine:
        binaries = machine.tree / "build/armhf/bin"
        steps.say(f"the programs are in {binaries}; what is left in /results stays; exit ends")
        machine.start(f"stty -F /dev/hvc0 rows {rows} cols {columns}; cd /results; "
                      f"PATH='{binaries}':$PATH TERM='{os.environ.get('TERM', 'linux')}' "
                      "exec setsid -c bash -i <>/dev/hvc0 >&0 2>&0", FOREVER).wait()
    return 0


@contextlib.contextmanager
def terminal_kept():
    """The emulator takes every key as it is; afterwards the terminal is as it was."""
    before = termios.tcgetattr(sys.stdin)
    try:
        yield
    finally:
        termios.tcsetattr(sys.stdin, termios.TCSADRAIN, before)


def show(unit):
    """Boots the machine with a receiver and opens the bench in it until its window is closed."""
    port = free_port()
    network = ["-netdev", f"user,id=net,restrict=on,hostfwd=tcp:{LOOPBACK}:{port}-{INSIDE}:{VNC_PORT}",
               "-device", "virtio-net-device,netdev=net"]
    with unit.receiver() as receiver, unit.powered(line=receiver.line, extra=network) as machine:
        machine.run("modprobe virtio_net && busybox ip addr add "
                    f"{INSIDE}/24 dev eth0 && busybox ip link set eth0 up && "
                    "setserial /dev/ttyS4 baud_base 921600", steps.BRIEF)
        bench = machine.tree / "build/armhf/bin/testmode-bench"
        # By DISPLAY the bench knows that somebody looks.
        window = machine.start(f"DISPLAY=vnc QT_FONT_DPI=96 QT_QPA_PLATFORM=vnc:port={VNC_PORT}:size={SCREEN} "
                               f"exec '{bench}' --uart /dev/ttyS4 --stand-ins", FOREVER)
        while not shows(port) and window.status is None:
            machine.ended(patience=0.5)
        steps.say(f"its screen is at {LOOPBACK}:{port} for a VNC client; closing the window, or "
                  "Ctrl-C here, ends")
        status = window.wait()
        if status != 0:
            raise steps.Failed(f"the bench ended with {status}: {window.said()[-400:]}")
    return 0


def shows(port):
    """Whether a VNC server answers there; the emulator takes connections before there is one."""
    with contextlib.suppress(OSError), \
            socket.create_connection((LOOPBACK, port), timeout=5) as client:
        return client.recv(12).startswith(b"RFB")
    return False


def free_port():
    """VNC's own port if nobody has it, else any."""
    for port in (VNC_PORT, 0):
        with socket.socket() as probe:
            try:
                probe.bind((LOOPBACK, port))
            except OSError:
                continue
            return probe.getsockname()[1]
    raise steps.Failed(f"no port is free on {LOOPBACK}")
