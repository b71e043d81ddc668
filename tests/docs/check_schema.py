"""Checks documents against one definition of a JSON schema; says what is wrong, one line each.

check_schema.py SCHEMA DEFINITION: reads one document, or one a line, from standard input.
Readers must leave alone what they do not know; here an unknown key is an error, for it means that
the schema was forgotten.
"""

import json
import sys

import jsonschema


def close(schema):
    """Makes every object refuse keys that its schema does not name."""
    if isinstance(schema, dict):
        if "properties" in schema and schema.get("type") == "object":
            schema.setdefault("additionalProperties", False)
        for part in schema.values():
            close(part)
    elif isinstance(schema, list):
        for part in schema:
            close(part)


def documents(text):
    try:
        return [json.loads(text)]
    except json.JSONDecodeError:
        return [json.loads(line) for line in text.splitlines()]


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        schema = json.load(file)
    jsonschema.Draft202012Validator.check_schema(schema)
    if sys.argv[2] not in schema["$defs"]:
        print("the schema knows no " + sys.argv[2])
        return 1
    published = jsonschema.Draft202012Validator(schema)
    close(schema)
    schema.pop("anyOf")
    schema["$ref"] = "#/$defs/" + sys.argv[2]
    strict = jsonschema.Draft202012Validator(schema)
    found = documents(sys.stdin.read())
    if not found:
        print("there is no document")
        return 1
    failed = False
    for document in found:
        for validator in published, strict:
            for error in validator.iter_errors(document):
                failed = True
                place = "/".join(str(part) for part in error.absolute_path)
                print(f"{place}: {error.message[:200]}")
    return 1 if failed else 0


sys.exit(main())
