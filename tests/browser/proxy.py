"""Stands between a browser and the terminal: counts the bytes, and can pretend that the page has a newer version."""
import collections
import socket
import threading
import urllib.request

NEW = "0123456789abcdef"  # the hash of the newer app.js


class Proxy:
    def __init__(self, terminal):
        self.terminal, self.isNew = terminal, False
        # "file" without heads; "rest" is the file that the first view does not need; "frame" both ways with all.
        self.bytes = collections.Counter()
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.origin = f"http://127.0.0.1:{self.listener.getsockname()[1]}"
        threading.Thread(target=self.accept, daemon=True).start()

    def link(self):
        return self.origin + "/" + self.terminal.link.split("/")[-1]

    def accept(self):
        while True:
            threading.Thread(target=self.serve, args=(self.listener.accept()[0],), daemon=True).start()

    def serve(self, browser):
        with browser:
            head = browser.recv(1 << 16)  # a browser sends it at once
            path = head.split(b" ")[1].decode() if head else ""
            if self.isNew and path in ("/app.js", "/worker.js"):
                return browser.sendall(self.newer(path))
            try:
                terminal = socket.create_connection(("127.0.0.1", self.terminal.port))
            except ConnectionRefusedError:
                return None
            with terminal:
                terminal.sendall(head)
                kind = "frame" if path == "/ws" else "rest" if path.startswith("/rest-") else "file"
                sent = "frame" if kind == "frame" else "request"
                threading.Thread(target=self.pump, args=(sent, browser, terminal), daemon=True).start()
                answer = terminal.recv(1 << 16)  # the whole head is in its first packet
                browser.sendall(answer)
                self.bytes[kind] += len(answer if kind == "frame" else answer.partition(b"\r\n\r\n")[2])
                self.pump(kind, terminal, browser)

    def pump(self, kind, source, target):
        try:
            while data := source.recv(1 << 16):
                self.bytes[kind] += len(data)
                target.sendall(data)
            target.shutdown(socket.SHUT_WR)
        except OSError:
            source.close()  # the other side has gone

    def newer(self, path):
        def load(name):
            with urllib.request.urlopen(f"http://127.0.0.1:{self.terminal.port}{name}") as answer:
                return answer.read().decode(), answer.headers["ETag"].strip('"')
        body, tag = load(path)
        body = (body + "\nwindow.isNew = true;") if path == "/app.js" else body.replace(load("/app.js")[1], NEW)
        data = body.encode()
        return (f'HTTP/1.1 200 OK\r\nContent-Type: text/javascript\r\nETag: "{NEW if path == "/app.js" else tag + NEW}"\r\n'
                f"Cache-Control: no-cache\r\nContent-Length: {len(data)}\r\nConnection: close\r\n\r\n").encode() + data
