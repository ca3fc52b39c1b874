"""A walk over all node classes: what a script can set, it reads back, under every option of every choice."""

import contextlib
import io

import numpy as np
import pytest

from sarvo import nemra

FAMILIES = sorted(name for name in dir(nemra.nodes) if not name.startswith("_") and hasattr(getattr(nemra.nodes, name), "Linked"))


def classes_of(family):
    return [entry for _, entry in sorted(vars(getattr(nemra.nodes, family)).items()) if isinstance(entry, type)]


def parameters_of(cls):
    """Names of the parameters that can be set, as they stand after get and set."""
    setters = (name for name in vars(cls) if name.startswith("set") and not name.startswith("setRaw"))
    return [name[3:] for name in setters if " parameter\n" in getattr(cls, name).__doc__]


def read(node, name):
    """The value, or None where the parameter doesn't exist now: a getter then prints a line."""
    printed = io.StringIO()
    with contextlib.redirect_stdout(printed):
        value = getattr(node, "get" + name)()
    return None if printed.getvalue() else value


def other(value):
    """A value of the same kind that may lie out of range; None if there is none to be told apart."""
    if isinstance(value, bool):
        return not value
    if isinstance(value, int):
        return value + 1
    if isinstance(value, float):
        return value * 0.9 + 1.0e-3
    if isinstance(value, np.ndarray):
        return (value * 0.5 + 0.25).astype(value.dtype)
    if isinstance(value, str):
        return value + "x"
    if isinstance(value, dict) and "space" in value:
        return {"space": "srgb", "coord": [0.25, 0.5, 0.75]}
    return None


def check_pair(node, name):
    """False where the parameter doesn't exist under the options that are selected."""
    before = read(node, name)
    if before is None:
        return False
    setter = getattr(node, "set" + name)
    is_empty_table = isinstance(before, dict) and not before
    assert is_empty_table or setter(before), f"refuses its own value {before!r}"
    changed = None if hasattr(node, f"get{name}Choices") else other(before)
    if changed is not None:
        expected = changed if setter(changed) else before
        assert np.array_equal(read(node, name), expected), f"set to {changed!r}, reads {read(node, name)!r}"
        setter(before)
    return True


def variants(node, choices, depth=0):
    """The node under every option of every choice, and under every option of the choices within those."""
    yield node
    for choice in choices:
        if read(node, choice) is None:
            continue
        for option in getattr(node, f"get{choice}Choices")():
            variant = node.copy()
            assert getattr(variant, "set" + choice)(option)
            assert read(variant, choice) == option
            inner = [c for c in choices if c != choice and read(node, c) is None] if depth < 2 else []
            yield from variants(variant, inner, depth + 1)


@pytest.mark.parametrize("family", FAMILIES)
def test_what_is_set_is_read_back(family):
    for cls in classes_of(family):
        names = parameters_of(cls)
        choices = [name for name in names if hasattr(cls, f"get{name}Choices")]
        reached = set()
        for node in variants(cls("n"), choices):
            for name in names:
                try:
                    if check_pair(node, name):
                        reached.add(name)
                except AssertionError as fault:
                    raise AssertionError(f"{cls.__name__}, {name}: {fault}") from fault
        assert reached == set(names), f"{cls.__name__}: no choice leads to {set(names) - reached}"
