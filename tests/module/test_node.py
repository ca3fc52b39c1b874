"""What every node can do, whatever its class."""

import pytest
from engine_script import EngineScript

ENGINE = EngineScript()
NODE = ENGINE.node("bsdf", "lambertian", names=["a"])["a"]
CHILD = ENGINE.handle("spectrum", "uniform", "reflectance")
ENGINE.update({
    f"nemraNode_children({NODE})": f"{CHILD} 0",
    f"nemraNode_getChildList({NODE})": f"{CHILD}",
    f"nemraNode_getChild({NODE}, reflectance)": str(CHILD),
    f"nemraNode_getListChild({NODE}, reflectance)": str(CHILD),
    f"nemraNode_isListType({NODE})": "true",
    f"nemraNode_listClass({NODE})": "layer",
    f"nemraNode_comments({NODE})": "grüße",
    f"nemraNode_setName({NODE}, b)": "true",
    f"nemraNode_clone({NODE})": "501",
    f"nemraNode_copy({NODE})": "502",
    f"nemraNode_setChild({NODE}, 501)": "true",
    f"nemraNode_serialize({NODE}, 0)": "<node>é</node>",
    f"nemraNode_serialize({NODE}, 1)": b"sv\0bin",
})
DELETED = "This node was deleted"


@pytest.fixture
def node(nemra):
    return nemra and nemra.nodes.Node("bsdf", "lambertian", "a")


@pytest.fixture
def deleted(nemra):
    return nemra and nemra.nodes.Node("no", "such", "a")


class TestLive:
    def test_texts_and_answers(self, node, probe):
        assert repr(node) == f"<nemranode_ptr: {NODE} class: bsdf type: lambertian name: a>"
        assert (node.name(), node.className(), node.typeName(), node.comments()) == ("a", "bsdf", "lambertian", "grüße")
        assert node.setName("b") is True and node.setName("taken") is False
        assert node.isListType() is True and node.listClass() == "layer"
        node.setComments("new")
        assert probe.calls("nemraNode_setComments") == [f"nemraNode_setComments({NODE}, new)"]

    def test_children_arrive_typed(self, node, nemra):
        uniform = nemra.nodes.spectrum.Uniform
        children = node.children()
        assert [type(child) for child in children] == [uniform, nemra.nodes.Node]
        assert children[1].name() == DELETED
        assert [type(child) for child in node.getChildList()] == [uniform]
        assert type(node.getChild("reflectance")) is type(node.getListChild("reflectance")) is uniform
        assert repr(node.getChild("other")).startswith("This node has been deleted.")

    def test_identity_is_the_handle(self, node):
        first, second = node.getChild("reflectance"), node.getChild("reflectance")
        assert first is not second and first.isIdentical(second) and not first.isIdentical(node)

    def test_pointer_keeps_the_low_half_with_its_sign(self, nemra, probe):
        probe.answer({"nemraNode_create(x, y, z)": (7 << 32) | 0x80000001})
        assert nemra.nodes.Node("x", "y", "z").getPtr() == -0x7FFFFFFF

    def test_null_text_of_the_engine_is_an_error(self, node, probe):
        probe.answer({f"nemraNode_comments({NODE})": "<null>"})
        with pytest.raises(RuntimeError, match="basic_string: construction from null is not valid"):
            node.comments()

    def test_signatures(self, nemra):
        node = nemra.nodes.Node
        assert node.__doc__ == "\n        A scene node.\n\n        This is the parent class of nodes.\n    \n    "
        first = {name: value.__doc__.split("\n")[0] for name, value in vars(node).items() if callable(value) and value.__doc__}
        me = "self: sarvo.nemra.nodes.Node"
        assert first["__init__"] == f"__init__({me}, className: str, typeName: str, name: str) -> None"
        assert first["write"] == f"write({me}, file: object) -> None"
        assert first["isIdentical"] == f"isIdentical({me}, node: sarvo.nemra.nodes.CNodeHandler) -> bool"
        assert first["setComments"] == f"setComments({me}, comment: str) -> None"
        assert first["setChild"] == f"setChild({me}, child: sarvo.nemra.nodes.Node) -> bool"
        assert first["children"] == f"children({me}) -> list[sarvo.nemra.nodes.Node]"
        assert first["getPtr"] == f"getPtr({me}) -> int"

    DOCS = {
        "getPtr": "Get pointer to data as an integer", "print": "Return the node as an svxml string",
        "write": "Write data to a python file object", "name": "Retrieve the name of the node", "setName": "Set node name",
        "isIdentical": "Check if this node and node point to the same data", "comments": "Retrieve comments of this node",
        "setComments": "Set comments to this node", "children": "Retrieve the list of childrens of this node",
        "getChild": "Get a child named \"name\" from this node", "isListType": "Is this node has a variable list of childs",
        "listClass": "Retrieve the className of the variable list of childs", "getChildList": "Retrieve the list of varying childs",
        "getListChild": "Retrieve a child named \"name\" in the varying child list",
        "clone": "Return a clone of this node. Childrens are shared with the original",
        "copy": "Return a copy of this node. All its nodes are also copied",
        "setChild": "Set a child. If a child in the list has the same name it is replaced by this one",
        "className": "Retrieve the className of this child", "typeName": "Retrieve the typeName of this child",
    }

    def test_docstrings(self, nemra):
        found = {name: value.__doc__.partition("\n\n")[2].removesuffix("\n") for name, value in vars(nemra.nodes.Node).items()
                 if not name.startswith("_")}
        assert found == self.DOCS


class TestDeleted:
    def test_answers(self, deleted, probe):
        probe.forget()
        assert repr(deleted) == "This node has been deleted. You should considerer calling \"del\" on it."
        for text in (deleted.name, deleted.className, deleted.typeName, deleted.comments, deleted.listClass, deleted.print):
            assert text() == DELETED
        assert deleted.setName("b") is False and deleted.isListType() is False and deleted.setComments("c") is None
        assert deleted.children() == [] and deleted.getChildList() == [] and deleted.getPtr() == 0
        for other in (deleted.getChild("c"), deleted.getListChild("c"), deleted.clone(), deleted.copy()):
            assert other.getPtr() == 0 and other.name() == DELETED
        assert probe.calls() == []

    def test_child_of_a_deleted_parent_stays_the_scripts(self, deleted, node, probe):
        clone = node.clone()
        assert deleted.setChild(clone) is False
        del clone
        assert probe.calls("nemraNode_release") == ["nemraNode_release(&501)"]

    def test_none_is_refused(self, nemra, node):
        for call in (lambda: node.setChild(None), lambda: nemra.nodes.Node.print(None), lambda: nemra.nodes.Node.name(None)):
            with pytest.raises(TypeError, match="incompatible function arguments"):
                call()


class TestOwnership:
    def test_made_by_a_class_and_handed_over_are_never_released(self, nemra, probe):
        node = nemra.nodes.Node("bsdf", "lambertian", "a")
        children = [node, node.getChild("reflectance"), *node.children(), nemra.nodes.bsdf.Lambertian("a")]
        del node, children
        assert probe.calls("nemraNode_release") == []

    def test_clone_and_copy_are_released_once(self, node, probe):
        clone, copy = node.clone(), node.copy()
        del clone, copy
        assert probe.calls("nemraNode_release") == ["nemraNode_release(&501)", "nemraNode_release(&502)"]

    def test_clone_placed_in_a_tree_is_not_released(self, node, probe):
        clone = node.clone()
        assert node.setChild(clone) is True
        del clone
        assert probe.calls("nemraNode_release") == []


class File:
    """A file object that shows how it was written to."""

    def __init__(self, mode, fail=False):
        self.mode, self.fail, self.pieces, self.flushes = mode, fail, [], 0

    def write(self, piece):
        if self.fail:
            raise OSError("disk full")
        self.pieces.append(piece)

    def flush(self):
        self.flushes += 1


class TestWrite:
    def test_mode_decides_the_format(self, node, tmp_path):
        with open(tmp_path / "t", "w", encoding="utf-8") as file:
            node.write(file)
        with open(tmp_path / "b", "wb") as file:
            node.write(file)
        assert (tmp_path / "t").read_text(encoding="utf-8") == node.print() == "<node>é</node>"
        assert (tmp_path / "b").read_bytes() == b"sv\0bin"

    def test_long_text_comes_whole_and_flushed(self, node, probe):
        text = "é€𝄞x" * 1000
        probe.answer({f"nemraNode_serialize({NODE}, 0)": text})
        file = File("w")
        node.write(file)
        assert "".join(file.pieces) == text and file.flushes > 0

    def test_empty_and_null_text(self, node, probe):
        probe.answer({f"nemraNode_serialize({NODE}, 0)": ""})
        assert node.print() == ""
        assert len(probe.calls("freeCharArray")) == 1
        probe.answer({f"nemraNode_serialize({NODE}, 0)": "<null>"})
        with pytest.raises(RuntimeError, match="construction from null"):
            node.print()

    def test_engine_text_is_freed(self, node, probe):
        probe.answer({f"nemraNode_serialize({NODE}, 0)": "once"})
        node.print()
        assert probe.calls("freeCharArray") == ["freeCharArray(once)"]

    def test_deleted_node_writes_its_text(self, deleted):
        text, binary = File("w"), File("wb")
        deleted.write(text)
        deleted.write(binary)
        assert text.pieces == [DELETED] and binary.pieces == [DELETED.encode()]

    def test_what_is_no_file_is_refused(self, node):
        with pytest.raises(TypeError) as error:
            node.write(7)
        assert str(error.value) == ("Node::dump(file): incompatible function argument:  `file` must be a file-like object, but "
                                    "`7` provided")
        import io
        with pytest.raises(AttributeError):
            node.write(io.StringIO())

    def test_error_of_the_file_passes_on(self, node, probe):
        probe.answer({f"nemraNode_serialize({NODE}, 0)": "x" * 5000})
        for mode in ("w", "wb"):
            with pytest.raises(OSError, match="disk full"):
                node.write(File(mode, fail=True))
