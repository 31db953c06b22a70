"""Runs every command that prints JSON on good, bad and missing inputs, and holds each line against the schema.

    RecordsTest.py VELMORA SCHEMA SAMPLES
"""
import json
import os
import pathlib
import subprocess
import sys
import tempfile

import jsonschema

velmora, schema_file, samples = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
schema = json.loads(schema_file.read_text())
jsonschema.Draft202012Validator.check_schema(schema)
problems = []


def validator(name):
    return jsonschema.Draft202012Validator({"$defs": schema["$defs"], "$ref": "#/$defs/" + name.replace(" --", "-")})


def run(name, arguments, good, bad, status=None, lines=None):
    """Runs a command that is to print so many records of good inputs, and so many of bad ones. Lines are what it reads."""
    words = name.split() + [str(argument) for argument in arguments]
    given = None if lines is None else "".join(json.dumps(line) + "\n" for line in lines).encode()
    result = subprocess.run([velmora] + words, input=given, capture_output=True, timeout=120)
    records = [json.loads(line) for line in result.stdout.splitlines()]
    wrong = [error.json_path + ": " + error.message for record in records
             for error in validator(name).iter_errors(record)]
    numbers = [list(record).index("schema") if "schema" in record else None for record in records]
    if numbers != [0] + [None] * (len(records) - 1):
        wrong.append("the schema's number is not the first member of the first record alone")
    counts = [sum(record.get("ok", True) is ok for record in records) for ok in (True, False)]
    if counts != [good, bad]:
        wrong.append(f"{counts[0]} good and {counts[1]} bad records, not {good} and {bad}")
    if result.returncode != (min(bad, 1) if status is None else status):
        wrong.append(f"status {result.returncode}: {result.stderr.decode()}")
    problems.extend(f"velmora {' '.join(words)}: {text}" for text in wrong)
    return records


with tempfile.TemporaryDirectory() as folder_name:
    folder = pathlib.Path(folder_name)
    os.environ.update(HOME=folder_name, XDG_DATA_HOME=folder_name, XDG_CONFIG_HOME=folder_name, TMPDIR=folder_name)
    good, library, stock = samples / "oval.velmora", next((samples / "libraries").iterdir()), samples / "stock.xml"
    cut, text, missing = folder / "cut.velmora", os.fsencode(folder) + b"/not \xff", folder / "missing"
    cut.write_bytes(good.read_bytes()[:9000])
    pathlib.Path(os.fsdecode(text)).write_bytes(b"no layout")
    as_json = ["--format", "json"]
    documents = [good, cut, os.fsdecode(text), missing]
    run("import", as_json + ["-d3"] + documents, 1, 3)
    run("check", as_json + [library, stock] + documents, 3, 3)
    run("parts", as_json + ["--stock", stock] + documents, 1, 3)
    run("parts", as_json + ["--per-layout", "--by", "layer", "--currency", "129=EUR:2", good, samples / "terminus.velmora"], 1, 0)
    run("stock", as_json + ["--dry-run", "--put", good, stock], 1, 0)
    run("stock", as_json + ["--take", good, stock], 0, 1)
    run("stock", as_json + ["--take", missing, stock], 0, 1)
    run("stock", as_json + ["--put", good, cut], 0, 1)
    run("library", as_json + [library] + documents, 1, 4)
    run("stock", as_json + [stock, missing, good], 1, 2)
    run("render", ["--json", "--output-dir", folder / "pictures"] + documents, 1, 3)
    run("thumbnail", ["--json", good, folder / "small.png"], 1, 0)
    run("thumbnail", ["--json", cut, folder / "cut.png"], 0, 1)
    run("schema", as_json, 1, 0)
    run("schema", as_json + ["--plugin", missing], 0, 1)
    run("doctor", as_json + ["--sandbox", "off"], 1, 0)  # a sanitizer cannot be confined
    run("doctor", as_json + ["--plugin", missing], 0, 1)
    run("index", as_json + [samples, folder], 1, 0, 1)
    run("index --status", as_json, 1, 0)
    run("search", as_json + ["kopfbahnhof"], 1, 0)
    run("index --failed", as_json, 0, 1, 0)
    run("index --forget", [samples, "--forget", missing] + as_json, 1, 1)

    requests = [{"verb": verb, "id": verb, "path": str(path)} for verb in ("import", "check", "parts", "render", "thumbnail")
                for path in (good, cut)]
    requests += [{"verb": "search", "query": query} for query in ("oval", "foo:x")]
    run("serve", [], 7, 7, 0, requests + ["nonsense"])

    # A schema that lets everything pass would be no test of anything.
    record = run("import", as_json + [good], 1, 0)[0]
    for member in ("path", "ok", "attributes"):
        broken = {("x" + name if name == member else name): value for name, value in record.items()}
        if validator("import").is_valid(broken):
            problems.append(f"the schema does not miss '{member}'")

print("\n".join(problems))
sys.exit(1 if problems else 0)
