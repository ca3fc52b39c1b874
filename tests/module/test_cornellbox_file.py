"""The shipped Cornell box is what the measured data give."""

import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent


def test_scene_file_is_up_to_date():
    done = subprocess.run([sys.executable, ROOT / "tools" / "make_cornellbox.py", "--check"], capture_output=True, text=True, timeout=60)
    assert done.returncode == 0, done.stderr
