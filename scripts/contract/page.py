"""docs/topics.md, for readers."""
import re

from contract.source import ROOT, WIDTH, WRITTEN_FROM

INTRODUCTION = "docs/contract/introduction.md"


def cell(text):
    return str(text).replace("|", "\\|").replace("\n", " ")


def table(head, rows):
    rows = list(rows)
    if not rows:
        return []
    lines = [head, ["---"] * len(head)] + rows
    return ["| " + " | ".join(cell(each) for each in row) + " |" for row in lines] + [""]


def meaning(shape):
    text = shape["means"]
    if shape.get("values"):
        text += ": " + ", ".join(f"{number} {name}" for number, name in shape["values"].items())
    return text


def nested(shape):
    return shape.get("rows") or shape.get("object")


def member_rows(contract, entries, with_wrong, prefix=""):
    for name, shape in contract.members(entries):
        optional = ", optional" if shape.get("optional") else ""
        row = [f"`{prefix}{name}`", contract.type_text(shape) + optional, contract.unit_text(shape), meaning(shape)]
        yield row + ([shape.get("wrong", "")] if with_wrong else [])
        if nested(shape):
            yield from member_rows(contract, nested(shape), with_wrong, f"{prefix}{name}{'[]' if 'rows' in shape else ''}.")


def member_table(contract, entries, with_wrong=False):
    head = ["Member", "Type", "Unit", "Meaning"] + (["Failure if missing or of another type"] if with_wrong else [])
    return table(head, member_rows(contract, entries, with_wrong))


def body_text(contract, topic):
    body = contract.body(topic)
    if body == "none":
        return ["**Body**: ignored.", ""]
    kind = contract.bodies[body]["title"] if isinstance(body, str) else contract.bodies["items"]["title"]
    kind = "object" if isinstance(body, dict) and "object" in body else kind
    note = f" ({topic['bodyNote']})" if "bodyNote" in topic else ""
    lines = [f"**Body**: {kind}{note}.", ""]
    if isinstance(body, dict):
        lines += member_table(contract, body.get("items") or body.get("object"), with_wrong=True)
    return lines + table(["Error", "Failure"], contract.body_faults(topic))


def reply_text(contract, topic):
    reply = topic["reply"]
    if reply.get("never"):
        return []
    under = f" under the topic \"{reply['topic']}\"" if "topic" in reply else ""
    if "rows" in reply:
        return [f"**Reply**{under}: array of rows.", ""] + member_table(contract, reply["rows"])
    if "object" in reply:
        return [f"**Reply**{under}: one object.", ""] + member_table(contract, reply["object"])
    return ["**Reply**: no data.", ""]


def wrapped(mark, text):
    """A frame as lines of JSON, broken after commas."""
    lines, line = [], mark
    for piece in re.split(r'(?<=[\]}el\d"],)(?=["{])', text):
        if len(line) + len(piece) > WIDTH and line != mark:
            lines.append(line)
            line = " " * len(mark)
        line += piece
    return lines + [line]


def example_text(shown):
    if not shown:
        return []
    lines = wrapped("> ", shown["request"]) + wrapped("< ", shown["reply"])
    note = [f"The first of {shown['rows']} rows.", ""] if shown.get("rows", 0) > 1 else []
    return ["```", *lines, "```", ""] + note


def topic_text(contract, topic, examples):
    right = "" if topic["right"] == "none" else f" Needs the right *{topic['right']}*."
    yield from [f"### \"{topic['name']}\"", "", topic["means"] + right, ""]
    if topic["name"] == "login":
        yield from member_table(contract, contract.frames["login"]["members"])
    else:
        yield from body_text(contract, topic)
    yield from reply_text(contract, topic)
    yield from example_text(examples["topics"].get(topic["name"]))


def push_text(contract, push, examples):
    yield from [f"### \"{push['name']}\"", "", push["means"], ""]
    if push["name"] in examples["pushes"]:
        yield from ["```", *wrapped("< ", examples["pushes"][push["name"]]), "```", ""]


def text(contract, examples):
    overview = [[f"[{each['name']}](#{anchor(each['name'])})", each["right"], each["means"].split(". ")[0].rstrip(".")]
                for each in contract.topics]
    lines = [f"<!-- {WRITTEN_FROM} -->", "# Topics", "", *(ROOT / INTRODUCTION).read_text().splitlines(), ""]
    lines += table(["Topic", "Right", "What it does"], overview)
    lines += ["## Frames", ""]
    for frame in contract.frames.values():
        if frame["title"] != "Login":
            lines += [f"### {frame['title']}", "", frame["means"], "", *member_table(contract, frame["members"])]
    lines += ["## Requests and replies", ""]
    for topic in contract.topics:
        lines += topic_text(contract, topic, examples)
    lines += ["## Pushes", ""]
    for push in contract.pushes:
        lines += push_text(contract, push, examples)
    return "\n".join(lines).rstrip() + "\n"


def anchor(name):
    return name.replace(".", "")
