"""check_schema.py [SCHEMA FILE]...: prints what in a file is not as its schema says. Exit code 77 without jsonschema."""
import json
import sys

try:
    from jsonschema import Draft202012Validator
except ImportError:
    sys.exit(77)


def read(name):
    with open(name, encoding="utf-8") as file:
        return json.load(file)


for schema, file in zip(sys.argv[1::2], sys.argv[2::2]):
    Draft202012Validator.check_schema(read(schema))
    for error in Draft202012Validator(read(schema)).iter_errors(read(file)):
        print(f"{file} {error.json_path}: {error.message[:200]}")
