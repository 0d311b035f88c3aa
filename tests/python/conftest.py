import pytest

pytest_plugins = ["pytester"]


def pytest_addoption(parser: pytest.Parser) -> None:
    parser.addoption("--benches", type=int, default=12,
                     help="how many benches come and go in the test of what they leave behind")
    parser.addoption("--testmode-lamp", help="the plug-in of python/examples/second_plugin")
