"""docs/schemas/: JSON Schemas, in what drafts 4 and 7 have in common."""
import copy


def value_schema(contract, shape):
    if "rows" in shape:
        schema = rows_schema(contract, shape["rows"])
    elif "object" in shape:
        schema = object_schema(contract, shape["object"])
    elif "array" in shape:
        schema = {"type": "array", "items": {"type": "string", **shape["array"]}}
    elif "of" in shape:
        schema = {"type": "array", "items": copy.deepcopy(contract.kinds[shape["of"]]["schema"])}
    elif "types" in shape:
        schema = {"type": shape["types"] if len(shape["types"]) > 1 else shape["types"][0]} if shape["types"] else {}
    else:
        schema = copy.deepcopy(contract.kinds[shape["kind"]]["schema"])
    schema.update({key: shape[key] for key in ("enum", "pattern", "minLength", "minimum", "maximum") if key in shape})
    return {"description": shape["means"], **schema}


def object_schema(contract, entries):
    members = dict(contract.members(entries))
    return {
        "type": "object",
        "properties": {name: value_schema(contract, shape) for name, shape in members.items()},
        "required": [name for name, shape in members.items() if not shape.get("optional")],
        "additionalProperties": False,
    }


def rows_schema(contract, entries):
    return {"type": "array", "items": object_schema(contract, entries)}


def body_schema(contract, topic):
    body = contract.body(topic)
    if body == "none":
        return {}
    if isinstance(body, str):
        array = contract.bodies[body]
        return {"type": "array", "items": copy.deepcopy(contract.kinds[array["kind"]]["schema"]),
                "maxItems": array["most"]}
    if "items" in body:
        return {**rows_schema(contract, body["items"]), "maxItems": 1000}
    return object_schema(contract, body["object"])


def reply_schema(contract, reply):
    if "rows" in reply:
        return rows_schema(contract, reply["rows"])
    if "object" in reply:
        return object_schema(contract, reply["object"])
    return {"not": {}} if reply.get("never") else {"type": "null"}


def frame_schema(contract, name):
    return object_schema(contract, contract.frames[name]["members"])


def schemas(contract):
    """(file name, schema) of each."""
    for name, frame in contract.frames.items():
        yield f"frame.{name}", {"title": frame["title"], **frame_schema(contract, name)}
    for topic in contract.topics:
        name = topic["name"]
        if name != "login":
            yield f"{name}.request", {"title": f"Body of {name}", **body_schema(contract, topic)}
        yield f"{name}.reply", {"title": f"Data of the reply to {name}", **reply_schema(contract, topic["reply"])}
    for push in contract.pushes:
        yield f"{push['name']}.push", {"title": f"Data of {push['name']}", **reply_schema(contract, push)}


def index(contract):
    """What a program needs to choose a schema."""
    topics = {topic["name"]: {"by": topic["by"], "right": topic["right"],
                              "replyTopic": topic["reply"].get("topic", topic["name"])} for topic in contract.topics}
    return {"topics": topics, "pushes": [push["name"] for push in contract.pushes], "reserved": contract.reserved}
