import assert from "node:assert/strict";
import test from "node:test";
import { misfit } from "../../terminal/page/src/wire/check";
import { readFrame } from "../../terminal/page/src/wire/frames";
import { kReplies } from "../../terminal/page/src/wire/shapes";
import { alert, order, price } from "./fake";

test("a list's rows keep the contract, member by member", () => {
  const shape = kReplies["order.list"];
  for (const [change, wrong] of [
    [{}, ""],
    [{ more: 1 }, ""], // a newer terminal may add some
    [{ price: "3300" }, "[1].price"],
    [{ price: undefined }, "[1].price"],
    [{ volume: 2.5 }, "[1].volume"],
    [{ hashCode: 2 ** 53 }, "[1].hashCode"], // has lost its last digit
    [{ note: null }, "[1].note"],
  ] as const) {
    assert.equal(misfit([order(), { ...order(), ...change }], shape), wrong);
  }
  assert.equal(misfit(null, shape), ".");
  assert.equal(misfit({ ...order() }, shape), ".");
  assert.equal(misfit([1], shape), "[0]");
});

test("words and optional members are checked", () => {
  assert.equal(misfit(["see", "trade"], ["=see|trade"]), "");
  assert.equal(misfit(["see", "own"], ["=see|trade"]), "[1]");
  assert.equal(misfit({}, { "text?": "text" }), "");
  assert.equal(misfit({ text: 1 }, { "text?": "text" }), ".text");
});

test("frames are read for what they are", () => {
  const asked = () => "order.list";
  const read = (frame: object | string) =>
    readFrame(typeof frame === "string" ? frame : JSON.stringify(frame), asked);
  const row = { ...order(), price: "x" };
  for (const [frame, expected] of [
    [{ id: 1, topic: "order.list", message: "", data: [] }, { kind: "reply", id: 1, topic: "order.list", data: [] }],
    [{ id: 1, topic: "x", message: "no", data: null }, { kind: "failure", id: 1, topic: "x", message: "no", seen: undefined }],
    [{ id: 1, topic: "x", message: "", data: null, text: "[{,}]" }, { kind: "garbled", id: 1, text: "[{,}]" }],
    [{ id: 1, topic: "order.list", message: "", data: [row] }, { kind: "garbled", id: 1, text: "[0].price" }],
    [{ topic: "quote.push", message: "", data: [price(9)] }, { kind: "quotes", rows: [price(9)] }],
    [{ topic: "alert.push", message: "", data: [alert()] }, { kind: "alerts", rows: [alert()] }],
    [{ topic: "quote.push", message: "", data: [{ hashCode: 7 }] }, { kind: "garbled", id: undefined, text: "[0].lastPrice" }],
    [{ seq: 4, topic: "y", message: "m", data: null }, { kind: "push", seq: 4, topic: "y", message: "m", data: null, wrong: "" }],
  ] as const) {
    assert.deepEqual(read(frame), expected);
  }
  const push = read({ seq: 5, topic: "order.push", message: "", data: [row] });
  assert.equal(push.kind === "push" && push.wrong, "[0].price");
  for (const text of ["", "{", "7", "null", "[]", '{"id":1}', '{"id":1,"topic":2,"message":"","data":null}']) {
    assert.equal(read(text).kind, "garbled", text);
  }
});
