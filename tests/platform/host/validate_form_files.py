#!/usr/bin/env python3
"""Validates form files against the form-file schema: validate_form_files.py SCHEMA FILE...

Prints one line for each fault, naming the file and where in it the fault is, and exits 1
when any file has one."""
import json
import sys

import jsonschema


def main(argv):
    if len(argv) < 3:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    with open(argv[1], encoding="utf-8") as f:
        schema = json.load(f)
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)
    faults = 0
    for path in argv[2:]:
        try:
            with open(path, encoding="utf-8") as f:
                document = json.load(f)
        except (OSError, ValueError) as e:
            print(f"{path}: {e}")
            faults += 1
            continue
        for error in sorted(validator.iter_errors(document), key=lambda e: list(e.absolute_path)):
            where = "/".join(str(p) for p in error.absolute_path) or "(top)"
            print(f"{path}: {where}: {error.message}")
            faults += 1
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
