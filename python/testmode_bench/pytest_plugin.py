"""The pytest plug-in: options, fixtures, and the evidence of tests that fail."""
from __future__ import annotations

import json
import re
import shutil
import sys
from dataclasses import replace
from pathlib import Path
from typing import Any, Generator, Iterator

import pytest

from . import evidence
from .bench import Bench, run
from .package import Package
from .program import Setup
from .receiver import Receiver

# A failure is shown where the test called, not where the call was made for it.
for _name, _module in list(sys.modules.items()):
    if _name.startswith(f"{__package__}.") and _name != __name__:
        vars(_module)["__tracebackhide__"] = True

_benches = pytest.StashKey[list[Bench]]()
_kept = pytest.StashKey[Path]()


def pytest_addoption(parser: pytest.Parser) -> None:
    group = parser.getgroup("testmode", "a simulated head unit for each test")
    group.addoption("--testmode-bench", metavar="PROGRAM", default="testmode-bench",
                    help="the bench; default: testmode-bench in PATH")
    group.addoption("--testmode-plugin", metavar="FILE",
                    help="the plug-in under test; default: the bench's own")
    group.addoption("--testmode-uart", metavar="DEVICE",
                    help="a real receiver's serial device; tests that need the simulated receiver "
                         "are skipped")
    group.addoption("--testmode-reset", metavar="LINE",
                    help="the line that the real receiver's reset hangs on, as the bench's --reset "
                         "takes it")
    group.addoption("--testmode-capture", metavar="DIR", default="testmode-capture",
                    help="where a test that fails leaves picture, journal, trace, dialogue, state "
                         "and, of a bench that records one, capsule; default: testmode-capture")


@pytest.fixture(scope="session")
def testmode_setup(pytestconfig: pytest.Config) -> Setup:
    """What every bench of this run is started with; a conftest.py may replace it."""
    option = pytestconfig.getoption
    program = shutil.which(option("--testmode-bench"))
    if program is None:
        raise pytest.UsageError(f"there is no program {option('--testmode-bench')}; install the "
                                "bench, or name it with --testmode-bench")
    plugin = option("--testmode-plugin")
    return Setup(program=str(Path(program).absolute()),
                 plugin=plugin and str(Path(plugin).absolute()),
                 uart=option("--testmode-uart"), reset=option("--testmode-reset"))


@pytest.fixture
def unit(request: pytest.FixtureRequest) -> dict[str, Any]:
    """The document of the unit's state that `bench` starts with.

    {} unless a test is parametrised with documents, or with files of them beside it:
    @pytest.mark.parametrize("unit", [{"usb": {"certification": 77}}, "cold.json"], indirect=True)
    """
    document = getattr(request, "param", {})
    if isinstance(document, (str, Path)):
        document = json.loads((request.path.parent / document).read_text())
    return dict(document)


def pytest_make_parametrize_id(val: object, argname: str) -> str | None:
    """A file of the unit's state is known by its name."""
    return Path(val).stem if argname == "unit" and isinstance(val, (str, Path)) else None


@pytest.fixture
def package(request: pytest.FixtureRequest, tmp_path: Path) -> Package:
    """The update package of `bench`, a small one; parametrise it with sizes for another.

    @pytest.mark.parametrize("package", [{"gnss_demo.bin": 1_000_000}], indirect=True)
    """
    folder = tmp_path / "package"
    folder.mkdir()
    return Package(folder, getattr(request, "param", None))


@pytest.fixture
def bench(request: pytest.FixtureRequest, testmode_setup: Setup, unit: dict[str, Any],
          package: Package) -> Iterator[Bench]:
    """A bench of the test's own, with a private root of its own, on the plug-in's first page."""
    setup = replace(testmode_setup, unit=unit, package=package.folder)
    with run(setup) as started:
        request.node.stash.setdefault(_benches, []).append(started)
        try:
            yield started
        finally:
            started.leave()
            # Whole only now that the bench has ended.
            if _kept in request.node.stash:
                evidence.keep_capsule(started, request.node.stash[_kept])


@pytest.fixture
def receiver(bench: Bench, testmode_setup: Setup) -> Receiver:
    """The bench's simulated receiver."""
    if testmode_setup.uart is not None:
        pytest.skip(f"the receiver at {testmode_setup.uart} is not the simulated one")
    return bench.receiver


def _keep_evidence(item: pytest.Item) -> Generator[None, Any, None]:
    """Keeps the evidence of a test that has failed, while its benches still run."""
    outcome = yield
    report: pytest.TestReport = outcome.get_result()
    benches = item.stash.get(_benches, None)
    if not report.failed or report.when == "teardown" or not benches:
        return
    folder = item.config.invocation_params.dir / item.config.getoption("--testmode-capture")
    folder /= re.sub(r"[^\w.\[\]-]+", "-", item.nodeid)
    item.stash[_kept] = folder
    kept, missed = evidence.keep(benches[-1], folder)
    text = "".join(f"[[ATTACHMENT|{path}]]\n" for path in kept) + "".join(missed)
    # A person reads the section, programs the JUnit file; that one follows the last report.
    report.sections.append(("Captured stdout of the bench", text))
    item.add_report_section("call", "stdout of the bench", text)
    item.user_properties += [("attachment", str(path)) for path in kept]


# No decorator: pytest 7 has no type for it.
pytest_runtest_makereport = pytest.hookimpl(hookwrapper=True)(_keep_evidence)
