#!/usr/bin/env python3
"""Copies public headers as the reference shows them; Doxygen reads the copies.

usage: filter.py FOLDER HEADER...

- The facts of a comment (a label, blanks, a text that may go on below) become a list of definitions.
- Members that mean the same in every class get the text of the table below, where the header says nothing.
- Private classes and friends, and what is added to std, are left out.

No line is added or removed, so that warnings name the lines of the header.
"""

import pathlib
import re
import sys

# Members by their declaration, and what is said about each. The first row that matches counts.
CONVENTIONS = [(re.compile(pattern), text) for pattern, text in [
    (r".* Flip\(\) const", "Returns the flip flag."),
    (r"void SetFlip\(", "Changes the flip flag."),
    (r".* Ok\(\) const", "Returns the ok flag."),
    (r"void SetOk\(", "Changes the ok flag."),
    (r".* PointOn\(\) const", "Returns the stored point, identity included."),
    (r".* Point1\(\) const", "Returns the first end."),
    (r".* Point2\(\) const", "Returns the second end."),
    (r".* (Get)?Method\(\) const", "Returns how the entity was made."),
    (r"void SetMethod\(", "Changes how the entity was made."),
    (r".* CStr\(\) const", "Returns the text, which a zero ends."),
    (r"GSL_HOST_API void \w+_finalize\(int& count\);", "Ends one start of the module."),
    (r"GSL_HOST_API aio_ostream& operator<<\(", "Writes to the stream."),
    (r"static constexpr unsigned int TypeId\(\)", "Returns the number of this class in the type table."),
    (r"(virtual )?unsigned int DynTypeId\(\) const",
     "Returns the number of the object's class; of the derived class, where the operation is virtual."),
    (r"(virtual )?void DBWrite\(const cls_WriteVisitor&", "Writes the record of this object."),
    (r"static void InitializeMetadata\(", "Registers this class and the fields of its record."),
    (r"const cls_Uid& Uid\(\) const", "Returns the identity."),
    (r"(\[\[nodiscard\]\] )?(GSL_HOST_API )?(constexpr )?bool operator!=\(", "Returns the opposite of operator==."),
    (r"(\[\[nodiscard\]\] )?(virtual )?(GSL_HOST_API )?(constexpr )?bool operator==\(", "Returns whether both are equal."),
    (r"(\[\[nodiscard\]\] )?(GSL_HOST_API )?(constexpr )?bool operator[<>]=?\(",
     "Returns whether the two are in the order of the operator."),
    (r"(?P<c>\w+)(<\w+>)?& operator=\(const (?P=c)(<\w+>)?&.*= delete", "Cannot be assigned."),
    (r"(?P<c>\w+)(<\w+>)?& operator=\(const (?P=c)", "Takes what a copy of the other object would hold."),
    (r"(?P<c>\w+)(<\w+>)?& operator=\((?P=c)(<\w+>)?&&", "Takes what the other object holds."),
    (r"(?P<c>\w+)\(const (?P=c)&( \w+)?\).*= delete", "Cannot be copied."),
    (r"(?P<c>\w+)\(const (?P=c)&", "Copies the other object, as the description of the class says."),
    (r"(?P<c>\w+)\((?P=c)&&", "Takes what the other object holds."),
    (r"(virtual )?~\w+\(\)", "Ends the object's life."),
    (r"static constexpr cls_CollectionType CollectionType\(\)", "Returns the kind of collection of the record."),
    (r"(const )?[\w: ]+(<\w+>)?[*]? begin\(\)", "Returns the place of the first element."),
    (r"(const )?[\w: ]+(<\w+>)?[*]? end\(\)", "Returns the place after the last element."),
    (r"(std::size_t|unsigned int) Count\(\) const", "Returns the number of elements."),
    (r"(\[\[nodiscard\]\] )?bool IsEmpty\(\) const", "Returns whether nothing is held."),
    (r"void Clear\(\)", "Removes every element."),
    (r"double [xyz](\{0\.0\}| = 0\.0)?;", "Component along that axis."),
    (r"double x = 0\.0, y = 0\.0, z = 0\.0;", "Components along the axes."),
    (r"explicit \w+Exception\(const cow_String& message", "Makes the exception of that message and identity."),
    (r"constexpr (const char\*|int) kFrom|constexpr const char\* kSourceName|\[\[noreturn\]\] inline void Throw\(",
     "Is for omu_PrimEnum alone."),
    (r"static constexpr const char\* kName =", "The name of the class."),
    (r"static constexpr unsigned int kTypeId =", "The number of the class in the type table."),
    (r"static constexpr .* Entries\(\)|static const .* Entries\(\)", "Returns the entries in order."),
    (r"using (iterator_category|value_type|difference_type|pointer|reference) =", "Required of an iterator."),
    (r"Iterator&? operator(\+\+|--)\(", "Steps on, or back, by one element."),
    (r"Iterator& operator[+-]=\(", "Steps on, or back, by n elements."),
    (r"[\[\]\w:*& ]+ operator((\*|->)\(\)|\[\]\(.*\)) const", "Returns the element."),
    (r"[\w:]+ operator\+\(", "Returns the sum."),
    (r"[\w:]+ operator-\(", "Returns the difference."),
    (r"[\w:]+ operator\*\(", "Returns the product."),
    (r"(\[\[nodiscard\]\] )?bool SharesWith\(", "Returns whether both share one body."),
    (r"(\[\[nodiscard\]\] )?[\w:]+ Read(?P<n>Integer|Double|Boolean|String)\(",
     "Returns the {n} of the field, or the default where the record has none."),
    (r"void Write(?P<n>Integer|Double|Boolean|String)\(", "Writes the {n} of the field."),
    (r"(\[\[nodiscard\]\] )?(virtual |constexpr )?(const )?(unsigned )?[\w:]+(<\w+>)?[&*]? (Get)?(?P<n>[A-Z]\w*)\(\) const (noexcept )?"
     r"\{ return m_\w+(\.\w+\(\))?; \}", "Returns the {n}."),
    (r"void Set(?P<n>[A-Z]\w*)\([\w:]+ value\) \{ m_\w+ = value; \}", "Changes the {n}."),
]]

LABEL = re.compile(r"(\s*///) ([A-Z][\w+ ]{2,13}?)( {2,})(\S.*)")
COMMENT = re.compile(r"(\s*///) ?(.*)")


def words(name):
    """Returns a name as words: OwnerFeatID is 'owner feat ID'."""
    parts = re.findall(r"[A-Z]{2,}(?![a-z])|[A-Z][a-z0-9]*", name)
    return " ".join(part if part.isupper() else part.lower() for part in parts)


def column_of_facts(block):
    """Returns the column at which the texts of the facts begin, or None for a comment without facts."""
    for line in block:
        match = LABEL.fullmatch(line)
        if match:
            return match.start(4) - match.start(2)
    return None


def with_facts(block):
    """Returns the lines of one comment with its facts as a list of definitions."""
    column = column_of_facts(block)
    if column is None:
        return block
    result, last = [], None
    for line in block:
        prefix, text = COMMENT.fullmatch(line).groups()
        label, blank = text[:column].rstrip(), text[column - 1:column] in (" ", "")
        is_fact = blank and re.fullmatch(r"[A-Z][\w+]*( \w+)?", label) and len(text) > column
        is_rest = last is not None and text[:column].strip() == "" and text.strip() != ""
        if is_fact:
            opening = "<dl><dt>" if last is None else "<dt>"
            last = len(result)
            result.append(f"{prefix} {opening}{label}</dt><dd>{text[column:]}")
        elif is_rest:
            result.append(f"{prefix} {text.strip()}")
            last = len(result) - 1
        else:
            if last is not None:
                result[last] += "</dl>"
                last = None
            result.append(line)
    if last is not None:
        result[last] += "</dl>"
    return result


def convention_for(declaration):
    for pattern, text in CONVENTIONS:
        match = pattern.match(declaration)
        if match:
            return text.format(n=words(match.groupdict().get("n") or ""))
    return None


# Several variables of one declaration.
SEVERAL = re.compile(r"(\s*)([\w:]+) (\w+(?: = [^,;]+|\{[^}]*\})?(?:, \w+(?: = [^,;]+|\{[^}]*\})?)+);(\s*///<.*)?")


def one_by_one(line):
    """Returns a declaration of several variables as several declarations, the comment at each."""
    match = SEVERAL.fullmatch(line)
    if not match:
        return line
    indent, kind, variables, comment = match.groups()
    names = re.split(r", (?=\w+(?: =|\{|$|,))", re.sub(r"\{[^}]*\}", "", variables))
    said = comment.split("///<")[1].strip() if comment else f"See {names[0].split(' ')[0]}."
    declarations = [f"{kind} {name};" for name in names]
    first = f"/** {said} */ {declarations[0]}" if comment else declarations[0]
    return indent + " ".join([first] + [f"/** {said} */ {other}" for other in declarations[1:]])


# What is added to std, templates that are compiled elsewhere, the marks of exported names.
LEFT_OUT = re.compile(r"template <>\nstruct std::hash<.*?\n\};|extern template (?!class)[^;]*;|"
                      r"#if defined\(__GNUC__\)\n#define GSL_\w+_API.*?#endif", re.DOTALL)


def without_left_out(source):
    return LEFT_OUT.sub(lambda match: "\n" * match.group().count("\n"), source)


def without_private_names(lines):
    """Yields the lines, and blank lines in place of the private classes and friends of a class."""
    private, hidden, in_friend = None, None, False
    for line in lines:
        text, indent = line.strip(), len(line) - len(line.lstrip())
        if hidden is not None:
            yield ""
            hidden = None if text == "};" and indent == hidden else hidden
            continue
        if text == "private:":
            private = indent
        elif text and private is not None and indent <= private:
            private = None
        is_class = private is not None and re.match(r"(class|struct|union) ", text)
        if is_class and text.endswith("{"):
            hidden = indent
        in_friend = private is not None and (in_friend or text.startswith("friend "))
        yield "" if in_friend or is_class and text.endswith(("{", ";")) else line
        in_friend = in_friend and not text.endswith(";")


def filtered(source):
    lines, block, documented, complete = [], [], False, True
    for line in without_private_names(without_left_out(source).splitlines()):
        # Doxygen links to friends without making their places, so an operator is shown as a member.
        line = re.sub(r"\bfriend (?=.*\boperator)", "", line)
        text = line.strip()
        if text.startswith("///"):
            block.append(line)
            continue
        if block:
            lines += with_facts(block)
            block, documented = [], True
        if complete and not documented and "///<" not in line:
            said = convention_for(text)
            if said is not None:
                line = line.replace(text, f"/** {said} */ {text}", 1)
        lines.append(one_by_one(line))
        if text.startswith("//"):
            continue
        documented = False
        complete = text == "" or text.startswith("#") or text.endswith((";", "{", "}", ":", ">"))
    # Without this, functions and types outside of classes have no place in the reference.
    lines[lines.index("")] = "/** @file */"
    return "\n".join(lines + with_facts(block)) + "\n"


def main():
    if len(sys.argv) < 3:
        print(__doc__, file=sys.stderr)
        return 2
    folder = pathlib.Path(sys.argv[1])
    for name in sys.argv[2:]:
        copy = folder / name
        copy.parent.mkdir(parents=True, exist_ok=True)
        copy.write_text(filtered(pathlib.Path(name).read_text(encoding="utf-8")), encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
