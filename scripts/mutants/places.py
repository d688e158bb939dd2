"""Finds the mutants of a C++ file: the places that can be changed while the program runs, and what to write there.

clang parses the file and prints its tree. A place is an expression or a statement in the body of a function. What
must be known when the program is compiled, and what a macro wrote, is skipped and counted.
"""

import collections
import json
import re
import subprocess
from dataclasses import dataclass, field

ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "&": "|", "|": "&", "^": "&", "<<": ">>", ">>": "<<"}
COMPARISON = {"<": ("<=", ">="), "<=": ("<", ">"), ">": (">=", "<="), ">=": (">", "<"), "==": ("!=",), "!=": ("==",)}
ASSIGNMENT = {"+=": "-=", "-=": "+=", "*=": "/=", "/=": "*=", "%=": "*=", "&=": "|=", "|=": "&=", "^=": "&=",
              "<<=": ">>=", ">>=": "<<="}
STEP = {"++": "--", "--": "++"}
SAME_PRECEDENCE = [set("+-"), set("*/%"), {"<<", ">>"}, {"<", "<=", ">", ">="}, {"==", "!="}]
# The order of their arguments has no meaning, to the bit.
COMMUTATIVE = {"Dot", "Add", "TwoSum", "Plus", "hypot", "swap"}

FUNCTIONS = {"FunctionDecl", "CXXMethodDecl", "CXXConstructorDecl", "CXXDestructorDecl", "CXXConversionDecl"}
SCOPES = {"NamespaceDecl", "LinkageSpecDecl", "CXXRecordDecl", "ClassTemplatePartialSpecializationDecl",
          "ClassTemplateSpecializationDecl", "FriendDecl"}
TRANSPARENT = {"ImplicitCastExpr", "ExprWithCleanups", "MaterializeTemporaryExpr", "CXXBindTemporaryExpr", "ParenExpr"}
CALLS = {"CallExpr", "CXXMemberCallExpr"}
REMOVED = CALLS | {"CXXOperatorCallExpr", "CompoundAssignOperator", "BreakStmt", "ContinueStmt", "CXXThrowExpr"}
JUMPS = {"BreakStmt", "ContinueStmt", "ReturnStmt"}
UNEVALUATED = {"UnaryExprOrTypeTraitExpr", "CXXNoexceptExpr", "TypeTraitExpr", "CXXTypeidExpr"}
IGNORED = {"CXXDefaultArgExpr", "CXXDefaultInitExpr", "ImplicitValueInitExpr", "FullComment", "PredefinedExpr"}

WHOLE = re.compile(r"(?:unsigned |signed )?(?:char|short|int|long|long long|__int128)|"
                   r"(?:std::)?u?int(?:8|16|32|64|ptr)_t|(?:std::)?(?:size|ptrdiff)_t|unsigned")
REAL = {"double": "1.0", "float": "1.0F"}
INTEGER = re.compile(r"(0[xX][0-9a-fA-F']+|0[bB][01']+|[0-9']+)([uUlL]*)")
COMMENT = re.compile(r'("(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\')|//[^\n]*|/\*.*?\*/', re.DOTALL)


@dataclass
class Place:
    """A range of the file, and what may be written there. An empty text removes a statement."""
    begin: int
    end: int
    line: int
    function: str
    kind: str
    text: str
    as_bool: bool = False
    was: str = ""
    now: str = ""


@dataclass
class Context:
    """What holds of a node by its parents."""
    function: str = ""
    skip: str = "a declaration"
    # Ranges that must stay as they are: what a reference is bound to, the step of a loop.
    bound: tuple = ()
    step: tuple = ()


@dataclass
class Found:
    places: list = field(default_factory=list)
    skipped: collections.Counter = field(default_factory=collections.Counter)
    errors: str = ""


def plain(text):
    """Returns the code on one line, without its comments."""
    return " ".join(COMMENT.sub(lambda match: match.group(1) or " ", text).split())


def peeled(node):
    while node.get("kind") in TRANSPARENT and node.get("inner"):
        node = node["inner"][0]
    return node


def type_of(node):
    kind = node.get("type", {})
    return re.sub(r"\bconst\b|&", "", kind.get("desugaredQualType", kind.get("qualType", ""))).strip()


def next_literal(text):
    """Returns another whole number in the same spelling, or None for a literal that is not a number."""
    match = INTEGER.fullmatch(text)
    if not match:
        return None
    digits, suffix = match.group(1).replace("'", ""), match.group(2)
    value = int(digits, 8 if re.fullmatch("0[0-7]+", digits) else 0)
    return f"{0 if value == 1 else value + 1}{suffix}"


def length_of(array):
    """Returns the length of an array by its type, or None."""
    kind = type_of(array)
    match = re.search(r"^[^\[]*\[(\d+)\]", kind) or re.search(r"\barray<.*, (\d+)(?:UL)?>$", kind)
    return int(match.group(1)) if match else None


class Finder:
    """Collects the places of one file from the trees that clang prints."""

    def __init__(self, name, text):
        self.name, self.text = name, text
        self.found, self.known = Found(), set()

    # The ranges and the texts of nodes.

    def span(self, node):
        """Returns where the code of the node begins and ends, or None where another file or a macro wrote it."""
        begin, end = node.get("range", {}).get("begin", {}), node.get("range", {}).get("end", {})
        if begin.get("in") != self.name or end.get("in") != self.name:
            return None
        return begin["offset"], end["offset"] + end["tokLen"]

    def is_elsewhere(self, node):
        return node.get("range", {}).get("begin", {}).get("in") not in (None, self.name)

    def raw(self, node):
        span = self.span(node)
        return plain(self.text[span[0]:span[1]]) if span else ""

    def operand(self, node, old, new):
        """Returns the code of an operand, in brackets where another operator would take it apart."""
        text, inner = self.raw(node), peeled(node) if node.get("kind") != "ParenExpr" else {}
        loose = inner.get("kind") in ("BinaryOperator", "ConditionalOperator", "CompoundAssignOperator")
        same = any(old in level and new in level for level in SAME_PRECEDENCE)
        return f"({text})" if loose and not same and not text.startswith("(") else text

    def add(self, node, text, kind, context, as_bool=False, span=None):
        span = span or self.span(node)
        if context.skip:
            self.found.skipped[context.skip] += 1
        elif span is None:
            self.found.skipped["written by a macro"] += 1
        elif span in context.bound:
            self.found.skipped["bound to a reference"] += 1
        elif span in context.step:
            self.found.skipped["the step of a loop"] += 1
        elif (*span, text) not in self.known and text != plain(self.text[slice(*span)]):
            self.known.add((*span, text))
            line = self.text.count("\n", 0, span[0]) + 1
            place = Place(*span, line, context.function, kind, text, as_bool)
            place.was, place.now = self.shown(place)
            self.found.places.append(place)

    def shown(self, place):
        """Returns the lines of a place as they are and as the mutant has them."""
        start = self.text.rfind("\n", 0, place.begin) + 1
        stop = self.text.find("\n", place.end)
        stop = len(self.text) if stop < 0 else stop
        after = self.text[:place.begin] + (place.text or ";") + self.text[place.end:stop]
        return plain(self.text[start:stop]), plain(after[start:])

    # Declarations.

    def visit(self, node, context):
        kind = node.get("kind", "")
        if not kind or node.get("isImplicit") or kind in IGNORED or self.is_elsewhere(node):
            return
        handler = getattr(self, f"visit_{kind}", None)
        if kind in FUNCTIONS:
            self.function(node, context)
        elif kind in SCOPES:
            self.children(node, Context(context.function))
        elif handler:
            handler(node, context)
        elif kind in UNEVALUATED:
            self.children(node, self.skipping(context, "not evaluated"))
        else:
            self.children(node, context)

    def children(self, node, context):
        for child in node.get("inner", []):
            self.visit(child, context)

    def skipping(self, context, reason):
        return Context(context.function, context.skip or reason)

    def function(self, node, context):
        """Visits what was written, and no instance of a template."""
        if self.span(node) is None:
            return
        inside = Context(node.get("name", context.function), "")
        for child in node.get("inner", []):
            if child.get("kind") == "CXXCtorInitializer":
                for value in child.get("inner", []):
                    # The range of a base is its whole initialiser.
                    self.visit(value, Context(inside.function, "", bound=(self.span(value),)
                                              if value.get("kind") == "CXXConstructExpr" else ()))
            elif child.get("kind") in ("CompoundStmt", "CXXTryStmt"):
                self.visit(child, inside)
            else:
                self.visit(child, Context(inside.function, "a declaration"))

    def first_of(self, node, context, kinds):
        for child in node.get("inner", []):
            if child.get("kind") in kinds:
                return self.visit(child, context)
        return None

    def visit_FunctionTemplateDecl(self, node, context):
        self.first_of(node, context, FUNCTIONS)

    def visit_ClassTemplateDecl(self, node, context):
        self.first_of(node, context, {"CXXRecordDecl"})

    def visit_VarDecl(self, node, context):
        spelled = node.get("type", {}).get("qualType", "")
        if node.get("constexpr"):
            context = self.skipping(context, "a constant expression")
        elif node.get("storageClass") == "static":
            context = self.skipping(context, "a static variable")
        elif spelled.endswith("&") and node.get("inner"):
            value, spans = node["inner"][0], []
            while value is not None:
                spans.append(self.span(value))
                value = value["inner"][0] if value.get("kind") in TRANSPARENT and value.get("inner") else None
            context = Context(context.function, context.skip, bound=tuple(spans))
        self.children(node, context)

    visit_DecompositionDecl = visit_VarDecl

    def visit_StaticAssertDecl(self, node, context):
        self.children(node, self.skipping(context, "a constant expression"))

    visit_ConstantExpr = visit_TemplateArgument = visit_EnumConstantDecl = visit_StaticAssertDecl

    def visit_LambdaExpr(self, node, context):
        bodies = [child for child in node.get("inner", []) if child.get("kind") == "CompoundStmt"]
        if bodies:
            self.visit(bodies[-1], Context(context.function, context.skip))

    # Statements.

    def visit_CompoundStmt(self, node, context):
        inner = node.get("inner", [])
        for child in inner:
            self.statement(child, context, child is inner[-1])

    def statement(self, node, context, is_last=False):
        """Visits a statement, which may be removed. A throw at the end of a body may be what returns from it."""
        core = peeled(node)
        kind = core.get("kind")
        removed = kind in REMOVED and not (kind == "CXXThrowExpr" and is_last)
        removed |= kind == "BinaryOperator" and core.get("opcode") == "="
        removed |= kind == "UnaryOperator" and core.get("opcode") in STEP
        removed |= kind == "ReturnStmt" and not core.get("inner") and not is_last
        span = self.span(node)
        if removed and span:
            semicolon = re.compile(r"\s*;").match(self.text, span[1])
            if semicolon:
                self.add(node, "", "removed statement", context, span=(span[0], semicolon.end()))
        self.visit(node, context)

    def visit_CaseStmt(self, node, context):
        inner = node.get("inner", [])
        for child in inner[:-1]:
            self.visit(child, context)
        for child in inner[-1:]:
            self.statement(child, context)

    visit_DefaultStmt = visit_CaseStmt

    def visit_IfStmt(self, node, context):
        inner = list(node.get("inner", []))
        for _ in range(bool(node.get("hasInit")) + bool(node.get("hasVar"))):
            self.visit(inner.pop(0), context)
        if node.get("isConstexpr"):
            self.visit(inner[0], self.skipping(context, "a constant expression"))
        else:
            self.condition(inner[0], context)
        for child in inner[1:]:
            self.statement(child, context)

    def visit_WhileStmt(self, node, context):
        inner = list(node.get("inner", []))
        if node.get("hasVar"):
            self.visit(inner.pop(0), context)
        self.condition(inner[0], context)
        self.statement(inner[1], context)

    def visit_DoStmt(self, node, context):
        self.statement(node["inner"][0], context)
        self.condition(node["inner"][1], context)

    def visit_ForStmt(self, node, context):
        start, variable, condition, step, body = node["inner"]
        self.visit(start, context)
        self.visit(variable, context)
        self.condition(condition, context)
        parts = [peeled(step)]
        while any(part.get("opcode") == "," for part in parts):
            parts = [peeled(child) for part in parts
                     for child in (part["inner"] if part.get("opcode") == "," else [part])]
        self.visit(step, Context(context.function, context.skip, step=tuple(
            self.span(part) for part in parts if part.get("kind") == "UnaryOperator")))
        self.statement(body, context)

    def visit_CXXForRangeStmt(self, node, context):
        """The range and the body are written; the rest is not."""
        inner = [child for child in node["inner"] if child.get("kind")]
        for child in inner[:-1]:
            for variable in child.get("inner", []):
                if variable.get("name", "").startswith("__range"):
                    self.visit_VarDecl(variable, context)
        self.statement(inner[-1], context)

    def visit_ReturnStmt(self, node, context):
        for value in node.get("inner", []):
            self.returned(value, context)
            self.visit(value, context)

    def returned(self, value, context):
        kind, core, raw = type_of(value), peeled(value), self.raw(value)
        if value.get("valueCategory") != "prvalue" or core.get("kind") in (
                "BinaryOperator", "ConditionalOperator", "UnaryOperator", "IntegerLiteral", "FloatingLiteral", "CXXBoolLiteralExpr",
                "CharacterLiteral", "CXXNullPtrLiteralExpr", "InitListExpr"):
            return
        if kind == "bool":
            self.add(value, f"!({raw})", "return value", context)
        elif WHOLE.fullmatch(kind) or kind in REAL:
            self.add(value, f"({raw}) + {REAL.get(kind, '1')}", "return value", context)
        elif kind.endswith("*"):
            self.add(value, "nullptr", "return value", context)

    # Expressions.

    def condition(self, node, context):
        """A condition that no operator inside it can turn round is negated."""
        core = peeled(node)
        operator = core.get("opcode")
        if core.get("kind") and not (core["kind"] == "CXXBoolLiteralExpr" or operator == "!" or
                                     (core["kind"] == "BinaryOperator" and
                                      (operator in COMPARISON or operator in ("&&", "||")))):
            self.add(node, f"!({self.raw(node)})", "negated condition", context, as_bool=True)
        self.visit(node, context)

    def visit_ConditionalOperator(self, node, context):
        self.condition(node["inner"][0], context)
        for child in node["inner"][1:]:
            self.visit(child, context)

    def visit_BinaryOperator(self, node, context):
        operator, (left, right) = node.get("opcode"), node["inner"]
        if operator in ("&&", "||"):
            other = "||" if operator == "&&" else "&&"
            texts = [self.operand(side, operator, other) for side in (left, right)]
            for text in (f" {other} ".join(texts), *texts):
                self.add(node, text, "logical operator", context, as_bool=True)
        else:
            pointers = any(type_of(side).endswith("*") for side in (left, right))
            kind = "comparison" if operator in COMPARISON else "arithmetic"
            others = COMPARISON.get(operator, (ARITHMETIC[operator],) if operator in ARITHMETIC and not pointers else ())
            for other in others:
                text = f"{self.operand(left, operator, other)} {other} {self.operand(right, operator, other)}"
                self.add(node, text, kind, context)
        self.children(node, context)

    def visit_CompoundAssignOperator(self, node, context):
        left, right = node["inner"]
        other = ASSIGNMENT.get(node.get("opcode"))
        if other:
            self.add(node, f"{self.raw(left)} {other} {self.raw(right)}", "assignment", context)
        self.children(node, context)

    def visit_UnaryOperator(self, node, context):
        operator, operand = node.get("opcode"), node["inner"][0]
        raw = self.raw(operand)
        if operator in STEP:
            text = f"{raw}{STEP[operator]}" if node.get("isPostfix") else f"{STEP[operator]}{raw}"
            self.add(node, text, "increment", context)
        elif operator in ("-", "~"):
            self.add(node, raw, "sign", context)
        elif operator == "!":
            self.add(node, raw, "negation", context, as_bool=True)
        self.children(node, context)

    def visit_ImplicitCastExpr(self, node, context):
        if node.get("castKind") not in ("NullToPointer", "NullToMemberPointer"):
            self.children(node, context)

    def visit_IntegerLiteral(self, node, context):
        text = next_literal(self.raw(node))
        if text:
            self.add(node, text, "constant", context)

    def visit_FloatingLiteral(self, node, context):
        raw = self.raw(node)
        is_zero = float(node.get("value", "0")) == 0.0
        suffix = raw[-1] if raw and raw[-1] in "fFlL" else ""
        self.add(node, f"1.0{suffix}" if is_zero else f"{raw} / 2", "constant", context)

    def visit_CXXBoolLiteralExpr(self, node, context):
        self.add(node, "false" if node.get("value") else "true", "constant", context)

    def visit_ArraySubscriptExpr(self, node, context):
        array, index = node["inner"]
        self.visit(array, context)
        self.index(array, index, context)

    def index(self, array, index, context):
        """Another element, which exists where the length is known, or where a first element exists."""
        length, raw = length_of(peeled(array)), self.raw(index)
        if peeled(index).get("kind") == "IntegerLiteral" and raw.isdigit():
            value = int(raw)
            other = (value + 1) % length if length else max(value - 1, 0 if value else 1)
            return self.add(index, str(other), "index", context)
        kind = type_of(index)
        if peeled(index).get("kind") == "BinaryOperator" or not (WHOLE.fullmatch(kind) or kind == "<dependent type>"):
            return self.visit(index, context)
        if length:
            self.add(index, f"gsl_mutants::Next({raw}, {length})", "index", context)
        else:
            self.add(index, f"gsl_mutants::Previous({raw})", "index", context)
        return self.visit(index, context)

    def visit_CXXOperatorCallExpr(self, node, context):
        inner = node["inner"]
        name = peeled(inner[0]).get("referencedDecl", {}).get("name")
        if name == "operator[]" and len(inner) == 3:
            self.visit(inner[1], context)
            self.index(inner[1], inner[2], context)
        else:
            self.children(node, context)

    def visit_CallExpr(self, node, context):
        callee, *arguments = node["inner"]
        called = peeled(callee)
        name = called.get("referencedDecl", {}).get("name") or called.get("name") or called.get("member", "")
        arguments = [argument for argument in arguments if argument.get("kind") not in IGNORED]
        for first, second in zip(arguments, arguments[1:]):
            same = type_of(first) == type_of(second) != "" and "<" not in type_of(first)[:1]
            spans = self.span(node), self.span(first), self.span(second)
            same = same and not (name in COMMUTATIVE or name in ("min", "max") and WHOLE.fullmatch(type_of(first)))
            if same and None not in spans and self.raw(first) != self.raw(second):
                (begin, end), (b1, e1), (b2, e2) = spans
                text = self.text[begin:b1] + self.text[b2:e2] + self.text[e1:b2] + self.text[b1:e1] + self.text[e2:end]
                self.add(node, plain(text), "swapped arguments", context)
        self.children(node, context)

    visit_CXXMemberCallExpr = visit_CallExpr


def in_order(located):
    """Returns what resolves the file of each location: clang prints it where it changes."""
    def resolve(found):
        if "offset" in found and "tokLen" in found:
            located["file"] = found.get("file", located.get("file"))
            found["in"] = located["file"]
        elif "expansionLoc" in found:
            # A token that a macro wrote has no place in the file.
            return {"in": None}
        return found
    return resolve


def trees(output):
    """Reads the trees, one after the other."""
    position = 0
    while True:
        start = output.find("{", position)
        if start < 0:
            return
        tree, position = json.JSONDecoder(object_hook=in_order({})).raw_decode(output, start)
        yield tree


def filters_of(text):
    """Returns parts of names, one of which is in the full name of each function of the file."""
    prefixes = set(re.findall(r"\b([a-z0-9]{3,4}_)\w+\s*(?:::|\()", text)) | {"gsl_", "(anonymous"}
    prefixes |= {name + "::" for name in re.findall(r"^namespace (\w+)", text, re.MULTILINE) if not name.startswith("gsl_")}
    plain_names = re.findall(r"^(?:inline |static |constexpr )*[\w:<>]+[ &*]+(\w+)\(", text, re.MULTILINE)
    if not re.search(r"^namespace \w", text, re.MULTILINE):
        prefixes |= {name for name in plain_names if not any(name.startswith(prefix) for prefix in prefixes)}
    return sorted(prefixes)


def find(path, flags, clang="clang++"):
    """Returns the places of a file, in their order, as clang sees it with these flags."""
    with open(path, encoding="latin-1", newline="") as file:
        text = file.read()
    finder = Finder(str(path), text)
    for name in filters_of(text):
        run = subprocess.run([clang, "-fsyntax-only", "-w", "-Xclang", "-ast-dump=json", "-Xclang",
                              f"-ast-dump-filter={name}", *flags, "-x", "c++", str(path)],
                             capture_output=True, encoding="latin-1", check=False)
        if run.returncode != 0:
            finder.found.errors = run.stderr
        for tree in trees(run.stdout):
            if tree.get("kind") in FUNCTIONS | SCOPES | {"FunctionTemplateDecl", "ClassTemplateDecl"}:
                finder.visit(tree, Context())
    finder.found.places.sort(key=lambda place: (place.begin, -place.end, place.text))
    return finder.found
