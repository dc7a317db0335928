"""docs/contract/examples.json, from a running terminal."""
import json
import re
import subprocess
import sys
import tempfile

from contract.source import ROOT

FILE = "docs/contract/examples.json"


def load():
    return json.loads((ROOT / FILE).read_text())


class Number(str):
    """A number with the digits that it has in the text."""


def parse(text):
    return json.loads(text, parse_int=Number, parse_float=Number)


def dump(value):
    if isinstance(value, Number):
        return str(value)
    if isinstance(value, dict):
        return "{" + ",".join(f"{json.dumps(key)}:{dump(each)}" for key, each in value.items()) + "}"
    if isinstance(value, list):
        return "[" + ",".join(map(dump, value)) + "]"
    return json.dumps(value, ensure_ascii=False)


STEADY = {"srcTimestamp": Number("1767225600000"), "exchTimestamp": Number("1767225600000"),
          "made": Number("1767225600000"), "fired": Number("1767225600000"),
          "time": Number("1767225600000"), "start": Number("1767225600000"), "day": Number("20454"),
          "minutes": [Number("0"), Number("1")], "prices": [Number("3325.0"), Number("3325.0")],
          "epoch": "5f0c9a3e7b21d468", "token": "Sx8siio4VC-9CiYm0FAKuPIG4c0PGjzOpzSECqptimM"}


def steady(value):
    """The value with everything that varies between runs replaced."""
    if isinstance(value, list):
        return [steady(each) for each in value]
    if isinstance(value, dict):
        return {key: STEADY[key] if key in STEADY and each != "0" else steady(each) for key, each in value.items()}
    return value


class Client:
    """A connection to a terminal that also keeps the first push of each topic."""

    def __init__(self, port):
        import websocket  # not at the top: --check without a terminal does not need it
        self.socket = websocket.create_connection(f"ws://127.0.0.1:{port}/ws", timeout=20)
        self.pushes = {}
        self.asked = 0

    def receive(self):
        """The text of an answer, or None for a push."""
        text = self.socket.recv()
        frame = parse(text)
        if "id" in frame:
            return text
        self.pushes.setdefault(frame["topic"], dump(steady(frame)))
        return None

    def send(self, text):
        """Sends the text as a frame; returns the text of the answer."""
        self.socket.send(text)
        while (answer := self.receive()) is None:
            pass
        return answer

    def ask(self, frame):
        self.asked += 1
        frame = {"id": Number(self.asked), **frame}
        return example(frame, parse(self.send(dump(frame))))


def example(request, answer):
    shown = {"request": dump(steady(request))}
    if isinstance(answer["data"], list):
        shown["rows"] = len(answer["data"])
        answer = {**answer, "data": answer["data"][:1]}
    return {**shown, "reply": dump(steady(answer))}


def compare(client, page):
    """Sends the frames that a page shows, and compares the answers with the page's."""
    lines = (ROOT / page).read_text().splitlines()
    for sent, wanted in zip(lines, lines[1:]):
        if sent.startswith("> ") and wanted.startswith("< "):
            answer = client.send(sent[2:])
            if not re.fullmatch(re.escape(wanted[2:]).replace("…", ".*"), answer):
                sys.exit(f"{page} has\n{sent}\n{wanted}\nbut the answer is\n< {answer}")


def conversation(contract, port, token):
    client = Client(port)
    topics = {}
    for topic in contract.topics:
        login = {"token": token, "device": "a1b2"} if topic["name"] == "login" else {}
        topics[topic["name"]] = client.ask({"topic": topic["name"], **login, **parse(json.dumps(topic["example"]))})
    for request in contract.provoke:
        client.ask(parse(json.dumps(request)))
    compare(client, "docs/wire.md")
    pushes = [push["name"] for push in contract.pushes if not push.get("rare")]
    while len(client.pushes) < len(pushes):
        client.receive()
    client.socket.close()
    return {"topics": topics, "pushes": {name: client.pushes[name] for name in pushes}}


def record(contract, terminal):
    with tempfile.TemporaryDirectory() as folder:
        command = [terminal, "--port", "0", "--quotes", "still", "--data", folder]
        process = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
        try:
            link = process.stdout.readline()
            address = re.search(r":(\d+)/#token=(\S+)", link)
            if address is None:
                sys.exit(f"{terminal} did not start; its first line is: {link}")
            return conversation(contract, *address.groups())
        finally:
            process.terminate()
            if process.wait() != 0:
                sys.exit(f"{terminal} ended with {process.returncode}")
