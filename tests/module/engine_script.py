"""What the probe engine is to answer: a script is a dict from a call, or a function's name, to its answer as text."""

import itertools


class EngineScript(dict):
    """Builds the answers for made-up nodes. Handles count from 1001, parameters and values from there on as well."""

    def __init__(self):
        super().__init__()
        self._numbers = itertools.count(1001)

    def node(self, family, kind, names=("dummy", "n"), parameters=(), children=(), raw=()):
        """Nodes of one class, alike but for their names; returns name -> handle. children: (slot, handle) pairs; raw:
        (slot, type) pairs."""
        handles = {}
        for name in names:
            handles[name] = handle = next(self._numbers)
            self[f"nemraNode_create({family}, {kind}, {name})"] = str(handle)
            self.identity(handle, family, kind, name)
            self[f"nemraNode_getParameters({handle})"] = " ".join(map(str, parameters))
            self[f"nemraNode_children({handle})"] = " ".join(str(child) for _, child in children)
            for slot, child in children:
                self[f"nemraNode_getChild({handle}, {slot})"] = str(child)
            self[f"nemraNode_getRawDataSize({handle})"] = str(len(raw))
            for index, (slot, code) in enumerate(raw):
                self[f"nemraNode_getRawDataName({handle}, {index})"] = slot
                self[f"nemraNode_getRawDataType({handle}, {slot})"] = str(code)
        return handles

    def identity(self, handle, family, kind, name):
        self[f"nemraNode_className({handle})"] = family
        self[f"nemraNode_typeName({handle})"] = kind
        self[f"nemraNode_name({handle})"] = name

    def handle(self, family="", kind="", name=""):
        """A node that the engine hands over."""
        number = next(self._numbers)
        self.identity(number, family, kind, name)
        return number

    def parameter(self, name, code, value=None, choices=None, columns=(), table=None):
        """choices: list of (name, nested parameters)."""
        number = next(self._numbers)
        self[f"nemraParameter_name({number})"] = name
        self[f"nemraParameter_type({number})"] = str(code)
        if value is not None:
            self[f"nemraParameter_value({number})"] = str(value)
        for index, (choice, nested) in enumerate(choices or ()):
            self[f"nemraParameter_choiceName({number}, {index})"] = choice
            self[f"nemraParameter_choiceParametersSize({number}, {index})"] = str(len(nested))
            for position, inner in enumerate(nested):
                self[f"nemraParameter_choiceParameter({number}, {index}, {position})"] = str(inner)
        self[f"nemraParameter_choicesSize({number})"] = str(len(choices or ()))
        self[f"nemraParameter_tableColumnParamsSize({number})"] = str(len(columns))
        for index, column in enumerate(columns):
            self[f"nemraParameter_tableColumnParam({number}, {index})"] = str(self.parameter(column, 2))
        if table is not None:
            self[f"nemraParameter_tableValues({number})"] = str(table)
        return number

    def value(self, reader=None, elements="", size=None, kind=0):
        """A value that `reader` (double, int32, float, bool, binary, ...) reads as `elements`."""
        number = next(self._numbers)
        self[f"nemraValue_type({number})"] = str(kind)
        count = len(elements) if reader == "binary" else len(elements.split())
        self[f"nemraValue_size({number})"] = str(count if size is None else size)
        if reader == "text":
            self[f"nemraValue_toString({number})"] = elements
        elif reader:
            self[f"nemraValue_get_{reader}({number})"] = elements
        return number

    def table(self, columns):
        """columns: lists of value handles."""
        number = next(self._numbers)
        self[f"nemraTableValue_numColumns({number})"] = str(len(columns))
        self[f"nemraTableValue_numRows({number})"] = str(len(columns[0]) if columns else 0)
        for c, cells in enumerate(columns):
            for r, cell in enumerate(cells):
                self[f"nemraTableValue_get({number}, {c}, {r})"] = str(cell)
        return number
