"""Every public name is described, with an example that runs, and the stubs know it."""

import ast
import doctest
import inspect
import re
import sys

import gsl_geometry as gg
import pytest

from support import MESHES, PACKAGE, SOURCE


def described():
    """Yields (name, object) of the module, of each public name, and of the members of each class."""
    yield "gsl_geometry", gg
    for name in gg.__all__:
        thing = getattr(gg, name)
        if name == "__version__":
            continue
        yield name, thing
        if not inspect.isclass(thing) or issubclass(thing, (Exception, Warning)):
            continue
        for member, value in vars(thing).items():
            is_field = inspect.isdatadescriptor(value) and not isinstance(value, property)
            if not member.startswith("_") and not is_field:
                yield f"{name}.{member}", getattr(thing, member) if isinstance(value, classmethod) else value


THINGS = dict(described())


@pytest.mark.parametrize("name", THINGS)
def test_is_described_and_its_example_runs(name, monkeypatch):
    thing = THINGS[name]
    text = inspect.getdoc(thing)
    assert text, f"{name} has no description"
    if inspect.isclass(thing) and issubclass(thing, (Exception, Warning)):
        return
    monkeypatch.chdir(MESHES)
    test = doctest.DocTestParser().get_doctest(text, {}, name, None, None)
    assert test.examples, f"{name} has no example"
    failures, _ = doctest.DocTestRunner(optionflags=doctest.REPORT_NDIFF).run(test)
    assert failures == 0


def test_finds_the_members():
    assert {"Body.moved", "Body.bounds", "Pair.sweep", "Contacts.kind", "LU.solve", "Transform.rotation"} <= set(THINGS)


def test_the_stub_has_every_name_of_the_compiled_part():
    tree = ast.parse((SOURCE / "python/gsl_geometry/_core.pyi").read_text())
    core = sys.modules["gsl_geometry._core"]

    def names(body):
        for node in body:
            if isinstance(node, (ast.FunctionDef, ast.ClassDef)):
                yield node.name, node
            elif isinstance(node, ast.AnnAssign):
                yield node.target.id, node

    stub = dict(names(tree.body))
    assert set(stub) == {name for name in vars(core) if not name.startswith("__")}
    for name, node in stub.items():
        if isinstance(node, ast.ClassDef) and name != "MeshError":
            made = {member for member in vars(getattr(core, name)) if not member.startswith("_")}
            assert {member for member, _ in names(node.body) if member != "__init__"} == made


def test_the_package_says_that_it_is_typed():
    assert (PACKAGE / "py.typed").exists() and (PACKAGE / "_core.pyi").exists()
    for name, thing in THINGS.items():
        if inspect.isfunction(thing):
            signature = inspect.signature(thing)
            assert signature.return_annotation is not inspect.Signature.empty, name
            for parameter in signature.parameters.values():
                assert parameter.name == "self" or parameter.annotation is not parameter.empty, name


@pytest.mark.parametrize("document", ["README.md", "docs/python.md"])
def test_the_documents_show_what_runs(document, monkeypatch, capsys):
    monkeypatch.chdir(MESHES)
    text = (SOURCE / document).read_text()
    names: dict = {}
    for block in text.split("```python\n")[1:]:
        code, _, rest = block.partition("```\n")
        exec(compile(code, document, "exec"), names)  # noqa: S102
        said = capsys.readouterr().out
        if rest.startswith("\n```\n"):
            assert said == rest[5:].split("```", 1)[0]
        else:
            remarks = re.findall(r"^print\(.*\)  +# (.*)$", code, re.MULTILINE)
            assert said.splitlines() == remarks and len(remarks) > 1
