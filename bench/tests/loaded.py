"""The driver's own main, which is no module to import by its name."""

import importlib.util
import pathlib
import sys

import machine

_FILE = pathlib.Path(machine.__file__).with_name("__main__.py")
_ORIGIN = importlib.util.spec_from_file_location("driver", _FILE)
driver = importlib.util.module_from_spec(_ORIGIN)
sys.modules["driver"] = driver
_ORIGIN.loader.exec_module(driver)
