"""docs/contract/topics.yaml as Python reads it."""
import json
import pathlib

import yaml

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
SOURCE = "docs/contract/topics.yaml"
WRITTEN_FROM = f"written by scripts/write-contract from {SOURCE}: edit that file"
WIDTH = 116  # of lines in written files


def load():
    return Contract(yaml.safe_load((ROOT / SOURCE).read_text()))


class Contract:
    def __init__(self, source):
        self.__dict__.update(source)

    def members(self, entries):
        """(name, description) of each member, with shared tables expanded."""
        for entry in entries:
            if isinstance(entry, str):
                yield from self.members(self.tables[entry])
            else:
                yield from entry.items()

    def type_text(self, shape):
        if "rows" in shape:
            return "array of objects"
        if "object" in shape:
            return "object"
        if "array" in shape:
            return "array of " + quoted(shape["array"]["enum"])
        if "of" in shape:
            return f"array of {self.kinds[shape['of']]['type']}"
        if "types" in shape:
            return " or ".join(shape["types"]) or "any"
        return quoted(shape["enum"]) if "enum" in shape else self.kinds[shape["kind"]]["type"]

    def unit_text(self, shape):
        return self.kinds[shape["kind"]]["unit"] if shape.get("kind") in self.kinds else ""

    def body(self, topic):
        """The description of a topic's body: "none", the name of an array of `bodies`, {"items": ...} or {"object": ...}."""
        return topic.get("body", "none")

    def body_faults(self, topic):
        """(what is wrong, the failure's text) for the body as a whole."""
        body = self.body(topic)
        own = body if isinstance(body, dict) else {}
        common = [] if "object" in own else self.bodies[body if isinstance(body, str) else "items"]["wrong"]
        for fault in common + own.get("wrong", []):
            for what, text in fault.items():
                yield what, own.get("notArray", text) if what == "not an array" else text


def quoted(values):
    return ", ".join(json.dumps(each, ensure_ascii=False) for each in values)
