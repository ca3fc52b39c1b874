"""How the engine's answers about a throw-away node become the methods of a class."""

import inspect

from engine_script import EngineScript

ENGINE = EngineScript()

# bsdf/lambertian: one parameter of each type, odd names, choices in choices.
INNERMOST = ENGINE.parameter("deep one", 3)
INNER = ENGINE.parameter("inner", 10, choices=[("x", [INNERMOST])])
CHOICE = ENGINE.parameter("a-b", 10, choices=[("none", []), ("some", [ENGINE.parameter("c", 3), INNER])])
TYPED = [ENGINE.parameter(f"p{code}", code) for code in range(-1, 17) if code != 10]
SPECULAR_CHILD = ENGINE.handle("spectrum", "uniform", "layer one")
LAMBERTIAN = ENGINE.node(
    "bsdf", "lambertian",
    parameters=[ENGINE.parameter("foo bar", 2), CHOICE, *TYPED, ENGINE.parameter("*star", 2), ENGINE.parameter("twice", 2),
                ENGINE.parameter("twice", 4), ENGINE.parameter("name", 4)],
    children=[("layer one", SPECULAR_CHILD), ("twice", ENGINE.handle("bsdf", "black", "twice")), ("gone", 0),
              ("child", ENGINE.handle("bsdf", "black", "child"))],
    raw=[("data/1", 7), ("two words", 5), ("", 1), ("hidden", 2), ("index", 3), ("wide", 6)],
)
# spectrum: the only family with a class whose type name has a hyphen and that others have as a child.
ENGINE.node("spectrum", "cie-xyz", parameters=[ENGINE.parameter("x", 2)])


def own_methods(python_class):
    return [name for name in vars(python_class) if not name.startswith("_")]


def signature(method):
    return method.__doc__.split("\n")[0]


class TestNames:
    def test_forbidden_characters_become_underscores(self, nemra):
        assert {"getFoo_bar", "setFoo_bar"} <= set(own_methods(nemra.nodes.bsdf.Lambertian))

    def test_keyword_is_the_sanitised_name(self, nemra):
        assert "foo_bar: float" in signature(nemra.nodes.bsdf.Lambertian.setFoo_bar)

    def test_docstrings_speak_the_raw_name(self, nemra):
        lambertian = nemra.nodes.bsdf.Lambertian
        assert lambertian.getFoo_bar.__doc__.rstrip().endswith("\nGet the foo bar parameter")
        assert lambertian.setFoo_bar.__doc__.rstrip().endswith("\nSet the foo bar parameter")

    def test_first_letter_comes_from_the_raw_name_of_a_parameter(self, nemra):
        assert {"get*star", "set*star"} <= set(own_methods(nemra.nodes.bsdf.Lambertian))

    def test_class_without_answers_keeps_the_general_methods(self, nemra):
        assert own_methods(nemra.nodes.bsdf.Black) == []
        assert nemra.nodes.bsdf.Black("n").name() == "This node was deleted"


class TestSignatures:
    EXPECTED = {
        1: ("str", None), 2: ("float", "float"), 3: ("int", "int"), 4: ("str", "str"), 5: ("str", "str"), 6: ("str", "str"),
        7: ("bool", "bool"), 8: ("numpy.ndarray[numpy.float32]",) * 2, 9: ("numpy.ndarray[numpy.float32]",) * 2,
        11: ("dict", "dict"), 12: ("dict", "dict"), 13: ("numpy.ndarray[numpy.float32]",) * 2,
        14: ("numpy.ndarray[numpy.float32]",) * 2,
    }

    def test_each_type_gives_its_methods(self, nemra):
        lambertian = nemra.nodes.bsdf.Lambertian
        for code in range(-1, 17):
            got, taken = self.EXPECTED.get(code, (None, None))
            getter, setter = getattr(lambertian, f"getP{code}", None), getattr(lambertian, f"setP{code}", None)
            self_text = "self: sarvo.nemra.nodes.bsdf.Lambertian"
            assert (getter and signature(getter)) == (got and f"getP{code}({self_text}) -> {got}")
            assert (setter and signature(setter)) == (taken and f"setP{code}({self_text}, p{code}: {taken}) -> bool")

    def test_table_setter_explains_the_dict(self, nemra):
        assert nemra.nodes.bsdf.Lambertian.setP11.__doc__.endswith(
            "Set the p11 parameter\n                    Table is passed as a dict with this format:\n\n"
            "                    .. code-block:: python\n\n"
            "                        table = {\"colname_0\": np.array(...),\"colname_1\": np.array(...)}\n"
            "                    \n                    \n")

    def test_constructor(self, nemra):
        lambertian = nemra.nodes.bsdf.Lambertian
        assert lambertian.__init__.__doc__ == "__init__(self: sarvo.nemra.nodes.bsdf.Lambertian, name: str) -> None\n"
        assert lambertian.__bases__ == (nemra.nodes.Node, nemra.nodes.CNodeHandler)

    def test_a_method_is_for_its_own_class(self, nemra):
        for other in (nemra.nodes.bsdf.Black("n"), None):
            try:
                nemra.nodes.bsdf.Lambertian.getP2(other)
            except TypeError as error:
                assert "incompatible function arguments" in str(error)
            else:
                raise AssertionError("taken for a Lambertian")


class TestChoices:
    def test_nested_parameters_have_methods_from_the_start(self, nemra):
        methods = own_methods(nemra.nodes.bsdf.Lambertian)
        expected = ["getA_bChoices", "getA_b", "setA_b", "getC", "setC", "getInnerChoices", "getInner", "setInner", "getDeep_one",
                    "setDeep_one"]
        assert [name for name in methods if name in expected] == expected
        assert nemra.nodes.bsdf.Lambertian.getA_bChoices.__doc__.rstrip().endswith("Retrieve the possible choices")

    def test_mode_is_the_outermost_choice(self, nemra, probe):
        node = nemra.nodes.bsdf.Lambertian("n")
        probe.forget()
        node.getC()
        node.getDeep_one()
        finds = probe.calls("nemraParameter_findRecursive")
        assert finds == [f"nemraParameter_findRecursive({CHOICE}, {name})" for name in ("c", "deep one")]


class TestClashes:
    def test_first_of_two_alike_wins_and_different_arguments_decide(self, nemra, probe):
        node = nemra.nodes.bsdf.Lambertian("n")
        node.setTwice(1.5)
        node.setTwice("text")
        assert probe.calls("nemraValue_create_double") == ["nemraValue_create_double(1.5)"]
        assert probe.calls("nemraValue_create_c_str") == ["nemraValue_create_c_str(text)"]
        assert nemra.nodes.bsdf.Lambertian.getTwice.__doc__.startswith("getTwice(*args, **kwargs)\nOverloaded function.")

    def test_parameter_hides_a_general_method_and_a_child_gives_way(self, nemra):
        lambertian = nemra.nodes.bsdf.Lambertian
        assert "setName" in own_methods(lambertian)
        assert "Node" not in lambertian.setTwice.__doc__
        assert lambertian.getChild is nemra.nodes.Node.getChild
        assert lambertian.setChild is nemra.nodes.Node.setChild

    def test_null_child_is_passed_over(self, nemra):
        assert not hasattr(nemra.nodes.bsdf.Lambertian, "getGone")
        assert not hasattr(nemra.nodes.bsdf.Lambertian, "getThis_node_was_deleted")


class TestChildrenAndRawData:
    def test_child_accessors(self, nemra):
        lambertian = nemra.nodes.bsdf.Lambertian
        assert lambertian.getLayer_one.__doc__ == (
            "getLayer_one(self: sarvo.nemra.nodes.bsdf.Lambertian) -> sarvo.nemra.nodes.Node\n\n"
            "\n            Retrieve the layer one node \n        \n")
        assert lambertian.setLayer_one.__doc__ == (
            "setLayer_one(self: sarvo.nemra.nodes.bsdf.Lambertian, arg0: sarvo.nemra.nodes.Node) -> bool\n\n"
            "\n            Set the layer one node \n        \n")

    def test_raw_slots(self, nemra):
        lambertian = nemra.nodes.bsdf.Lambertian
        names = [name for name in own_methods(lambertian) if "Raw" in name]
        assert names == ["setRawData_1", "getRawData_1", "setRawTwo_words", "getRawTwo_words", "setRaw", "getRaw", "setRawIndex",
                         "getRawIndex", "setRawWide", "getRawWide"]
        assert lambertian.setRawTwo_words.__doc__ == (
            "setRawTwo_words(self: sarvo.nemra.nodes.bsdf.Lambertian, arg0: numpy.ndarray[numpy.float32]) -> bool\n")
        assert lambertian.getRawData_1.__doc__.endswith("-> bytes\n")


class TestImport:
    def test_engine_is_started_before_it_is_questioned(self, probe):
        assert probe.import_calls[:2] == ["nemraGlobalInitialize(false, )", "nemraNode_register()"]
        assert probe.import_calls[2].startswith("nemraNode_create(intlaw, advfoil, dummy)")

    def test_two_dummies_of_each_class_and_none_given_back(self, nemra, probe):
        created = [call for call in probe.import_calls if call.startswith("nemraNode_create(")]
        classes = [value for family in vars(nemra.nodes).values() if inspect.ismodule(family)
                   for value in vars(family).values() if inspect.isclass(value) and issubclass(value, nemra.nodes.Node)]
        assert len(classes) == 194
        assert len(created) == 2 * 194 and len(set(created)) == 194
        assert not [call for call in probe.import_calls if "elease(" in call]

    def test_families_in_order(self, probe):
        created = [call.split("(")[1].split(",")[0] for call in probe.import_calls if call.startswith("nemraNode_create(")]
        assert list(dict.fromkeys(created)) == (
            "intlaw instrument emitter dielectricfunc filter layer material colloid text scalarshader spectrum sensor roughness "
            "scattering normalshader image output avspectrum medium filtershader setup bsdf environment").split()


class TestCatalogue:
    def test_every_class_comes_back_from_the_engine_as_itself(self, nemra, probe):
        """Through the type hook, by the engine's own words."""
        types = {"Axf_svbrdf": "axf-svbrdf", "Cie_xyz": "cie-xyz"}
        probe.answer(nemraNode_clone="77")
        checked = 0
        for family in [value for value in vars(nemra.nodes).values() if inspect.ismodule(value)]:
            for name, python_class in vars(family).items():
                if not inspect.isclass(python_class) or not issubclass(python_class, nemra.nodes.Node):
                    continue
                kind = types.get(name, name[0].lower() + name[1:])
                probe.answer({"nemraNode_create(any, any, any)": "76", "nemraNode_className(77)": family.__name__.split(".")[-1],
                              "nemraNode_typeName(77)": kind})
                assert type(nemra.nodes.Node("any", "any", "any").clone()) is python_class
                checked += 1
        assert checked == 194

    def test_unknown_and_unbound_classes_are_plain_nodes(self, nemra, probe):
        for family, kind in (("bsdf", "later"), ("later", "lambertian"), ("rtf", "rtf"), ("spectrum", "cie_xyz")):
            probe.answer({"nemraNode_create(any, any, any)": "76", "nemraNode_clone(76)": "78", "nemraNode_className(78)": family,
                          "nemraNode_typeName(78)": kind})
            assert type(nemra.nodes.Node("any", "any", "any").clone()) is nemra.nodes.Node

    def test_what_is_there_and_what_is_not(self, nemra):
        assert not hasattr(nemra.nodes, "rtf")
        assert not hasattr(nemra, "geometries")
        assert nemra.nodes.geometries.__name__ == "sarvo.nemra.nodes.geometries"
        assert nemra.nodes.bsdf.__name__ == "sarvo.nemra.nodes.bsdf" and nemra.nodes.bsdf.__doc__ is None

    def test_documentation_links(self, nemra):
        nodes = nemra.nodes
        oren_nayar = nodes.bsdf.Oren_nayar.__doc__
        root = oren_nayar.split("\"")[2].removesuffix("2024-docs/reference/nodes/bsdf/oren_nayar.html")
        url = root + "2024-docs/reference/nodes/bsdf/oren_nayar.html"
        assert root.startswith("https://") and root.endswith("/sarvo")
        assert oren_nayar == (f"\n    Oren_nayar\n    \n    .. raw:: html\n\n        <iframe id=Oren_nayar\" src=\"{url}\""
                              f"loading=\"lazy\" alt=\"{url}\"></iframe>\n\n    ")
        for python_class, page in ((nodes.avspectrum.Table, "avspectrum"), (nodes.spectrum.Cie_xyz, "spectrum/cie-xyz"),
                                   (nodes.dielectricfunc.Na, "dielectricfunc/absorbance"), (nodes.bsdf.Linked, "bsdf/linked"),
                                   (nodes.material.Axf_svbrdf, "material/axf-svbrdf"), (nodes.setup.Default, "setup")):
            assert python_class.__doc__.count(f"2024-docs/reference/nodes/{page}.html\"") == 2
        assert nodes.avspectrum.Linked.__doc__ == "Linked"
        assert nodes.text.Default.__doc__ == "Default"
