"""docs/asyncapi.yaml."""
import json

import yaml

from contract.schemas import frame_schema
from contract.source import WIDTH, WRITTEN_FROM


def ref(*parts):
    return {"$ref": "/".join(("#",) + parts)}


def schema_ref(name):
    return {"$ref": f"./schemas/{name}.json"}


def payload(contract, frame, topic, data):
    """A frame's schema for one topic and its data."""
    schema = frame_schema(contract, frame)
    schema["properties"]["topic"] = {"type": "string", "enum": [topic]}
    schema["properties"]["data"] = schema_ref(data)
    return schema


def request_payload(contract, topic):
    name = topic["name"]
    if name == "login":
        return frame_schema(contract, "login")
    schema = payload(contract, "request", name, f"{name}.request")
    if topic["right"] == "see":
        del schema["properties"]["key"]
    if contract.body(topic) != "none":
        schema["required"].append("data")
    return schema


def message(title, body, example=None, correlated=True):
    result = {"name": title, "title": title, "contentType": "application/json", "payload": body}
    if correlated:
        result["correlationId"] = ref("components", "correlationIds", "id")
    if example:
        result["examples"] = [{"name": "fromTheTerminal", "payload": json.loads(example)}]
    return result


def messages(contract, examples):
    for topic in contract.topics:
        name = topic["name"]
        shown = examples["topics"].get(name, {})
        yield f"{name}.request", message(f"{name} request", request_payload(contract, topic), shown.get("request"))
        if not topic["reply"].get("never"):
            answer = payload(contract, "reply", topic["reply"].get("topic", name), f"{name}.reply")
            yield f"{name}.reply", message(f"{name} reply", answer, shown.get("reply"))
    for frame in ("failure", "text"):
        yield frame, message(contract.frames[frame]["title"], schema_ref(f"frame.{frame}"))
    for push in contract.pushes:
        name = push["name"]
        body = payload(contract, push.get("frame", "push"), name, f"{name}.push")
        yield name, message(name, body, examples["pushes"].get(name), correlated=False)


def operation(topic, channel):
    name = topic["name"]
    replies = ([] if topic["reply"].get("never") else [f"{name}.reply"]) + ["failure"]
    if "rows" in topic["reply"]:
        replies.append("text")
    return {
        "action": "receive",
        "channel": channel,
        "title": name,
        "summary": topic["means"],
        "description": f"Needs the right: {topic['right']}.",
        "messages": [ref("channels", "socket", "messages", f"{name}.request")],
        "reply": {"channel": channel, "messages": [ref("channels", "socket", "messages", each) for each in replies]},
    }


def text(contract, examples):
    channel = ref("channels", "socket")
    described = dict(messages(contract, examples))
    operations = {topic["name"]: operation(topic, channel) for topic in contract.topics}
    for push in contract.pushes:
        operations[push["name"]] = {"action": "send", "channel": channel, "title": push["name"],
                                    "summary": push["means"],
                                    "messages": [ref("channels", "socket", "messages", push["name"])]}
    document = {
        "asyncapi": "3.0.0",
        "info": {"title": "pocket-terminal", "version": contract.version,
                 "description": "Messages between the reference terminal's gateway and its clients. "
                                "docs/topics.md has the same as a page, docs/wire.md explains the format."},
        "defaultContentType": "application/json",
        "servers": {"terminal": {"host": "127.0.0.1:8700", "protocol": "ws",
                                 "description": "The gateway; wss if it listens beyond loopback."}},
        "channels": {"socket": {"address": "/ws", "title": "WebSocket", "servers": [ref("servers", "terminal")],
                                "description": "One text frame for each message. The first frame is the login, with a "
                                               "token. docs/gateway.md lists limits and close codes.",
                                "messages": {name: ref("components", "messages", name) for name in described},
                                "bindings": {"ws": {"method": "GET", "bindingVersion": "0.1.0"}}}},
        "operations": operations,
        "components": {"messages": described, "correlationIds": {"id": {
            "description": "The answer has the id of its request.", "location": "$message.payload#/id"}}},
    }
    dumped = yaml.dump(document, Dumper=PlainDumper, sort_keys=False, allow_unicode=True, width=WIDTH)
    return f"# {WRITTEN_FROM}\n{dumped}"


class PlainDumper(yaml.SafeDumper):
    def ignore_aliases(self, data):
        return True
