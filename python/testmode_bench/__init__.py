"""Drives testmode-bench, a simulated head unit and GNSS receiver, from Python and pytest."""
from .bench import Bench, run
from .connection import Events, Happening
from .errors import BenchEnded, BenchError, CallError, WaitTimeout
from .package import Package
from .page import Box, Page, Widget
from .program import Setup
from .receiver import Receiver
from .records import Call, Journal, Trace
from .unit import Unit

__all__ = ["Bench", "BenchEnded", "BenchError", "Box", "Call", "CallError", "Events", "Happening",
           "Journal", "Package", "Page", "Receiver", "Setup", "Trace", "Unit", "WaitTimeout",
           "Widget", "run"]
