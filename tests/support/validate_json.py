"""Validates JSON documents with an independent validator.

usage: validate_json.py SCHEMA DOCUMENT...

Prints one line for each error, which begins with the name of the document; exits with 1 when there is one.
"""

import json
import os
import sys

import jsonschema


def refuse(constant):
    raise ValueError(f"{constant} is not JSON")


def errors_of(validator, path):
    name = os.path.basename(path)
    try:
        with open(path, encoding="utf-8") as file:
            document = json.load(file, parse_constant=refuse)
    except ValueError as error:
        return [f"{name}: {error}"]
    return [
        f"{name}: {'/'.join(map(str, error.absolute_path)) or 'the document'}: {error.message}"
        for error in validator.iter_errors(document)
    ]


def validator_of(path):
    with open(path, encoding="utf-8") as file:
        schema = json.load(file)
    jsonschema.Draft202012Validator.check_schema(schema)
    return jsonschema.Draft202012Validator(schema)


def main():
    validator = validator_of(sys.argv[1])
    errors = [error for path in sys.argv[2:] for error in errors_of(validator, path)]
    for error in errors:
        print(error)
    return 1 if errors or not sys.argv[2:] else 0


if __name__ == "__main__":
    sys.exit(main())
