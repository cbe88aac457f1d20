"""The JSON is valid by its schema, and a damaged one is not.

usage: schema_test.py ZANDOR_EXPORT SCHEMA JOBDIRECTORY...
"""
import copy
import json
import os
import sys
import tempfile

from common import copy_of, export, skip

try:
    import jsonschema
except ImportError as error:
    skip("needs python3-jsonschema (%s)" % error)

program = sys.argv[1]
with open(sys.argv[2]) as file:
    schema = json.load(file)
jsonschema.Draft7Validator.check_schema(schema)
validator = jsonschema.Draft7Validator(schema)

for job in sys.argv[3:]:
    with tempfile.TemporaryDirectory() as temporary:
        place = copy_of(job, temporary)
        data = json.loads(export(program, place, "json"))
        validator.validate(data)
        inputs = data["provenance"]["inputs"]
        assert len(inputs) == len(set(entry["file"] for entry in inputs))
        assert all(os.path.isfile(os.path.join(place, entry["file"])) for entry in inputs)
        keys = set(data) | set(data["projected"])
        texts = {"schema_name", "schema_version", "provenance", "units", "symbols", "atomic_numbers", "symmetry_used"}
        assert keys - texts - {"projected", "unprojected"} <= set(data["units"]), "a text per key"
        for key in schema["required"]:
            damaged = copy.copy(data)
            del damaged[key]
            assert not validator.is_valid(damaged), key
        for mode_key in ("displacements", "frequencies"):
            damaged = copy.deepcopy(data)
            damaged["projected"][mode_key][0] = "text"
            assert not validator.is_valid(damaged), mode_key
