import { misfit } from "./check";
import { kFrames, kPushes, kReplies } from "./shapes";
import { AlertPushRow, FrameFailure, FramePush, FrameReply, FrameText, FrameUnnumbered, QuotePushRow } from "./types";

// What a frame of the terminal turned out to be.
export type Frame =
  | { kind: "reply"; id: unknown; topic: string; data: unknown }
  | { kind: "failure"; id: unknown; topic: string; message: string; seen?: string }
  | { kind: "garbled"; id: unknown; text: string } // the unreadable text, or the path to what breaks the contract
  | { kind: "push"; seq: number; topic: string; message: string; data: unknown; wrong: string }
  | { kind: "quotes"; rows: QuotePushRow[] }
  | { kind: "alerts"; rows: AlertPushRow[] };

const kUnclear = /结果未知|^the outcome of this request is not known/;

// Whether a failure leaves open what was done: the terminal lost its disk, or ended before the reply.
export function isUnclear(message: string): boolean {
  return kUnclear.test(message);
}

function parse(text: string): unknown {
  try {
    return JSON.parse(text);
  } catch {
    return undefined;
  }
}

function readPush(push: FramePush): Frame {
  const { seq, topic, message, data } = push;
  const shape = kPushes[topic];
  const wrong = push.text ?? (shape === undefined || data === null ? "" : misfit(data, shape));
  return { kind: "push", seq, topic, message, data, wrong };
}

function readUnnumbered({ topic, data }: FrameUnnumbered): Frame {
  const wrong = misfit(data, kPushes[topic]);
  if (wrong !== "") return { kind: "garbled", id: undefined, text: wrong };
  if (topic === "alert.push") return { kind: "alerts", rows: data as AlertPushRow[] };
  return { kind: "quotes", rows: data as QuotePushRow[] };
}

// `asked` is the topic of the request with this id, whose contract the reply's data must keep: the reply's own topic
// may be another one. Undefined if there is no such request.
export function readFrame(text: string, asked: (id: unknown) => string | undefined): Frame {
  const frame = parse(text);
  if (misfit(frame, kFrames.push) === "") return readPush(frame as FramePush);
  if (misfit(frame, kFrames.unnumbered) === "") return readUnnumbered(frame as FrameUnnumbered);
  if (misfit(frame, kFrames.text) === "") {
    const { id, text: unreadable } = frame as FrameText;
    return { kind: "garbled", id, text: unreadable };
  }
  const id = (frame as { id?: unknown } | undefined)?.id;
  const wrong = misfit(frame, kFrames.reply);
  if (wrong !== "") return { kind: "garbled", id, text: `${wrong}: ${text}` };
  const { topic, data, message } = frame as FrameReply | FrameFailure;
  if (message !== "") return { kind: "failure", id, topic, message, seen: (frame as FrameFailure).seen };
  const shape = kReplies[asked(id) ?? ""];
  const misfitting = shape === undefined ? "" : misfit(data, shape);
  if (misfitting !== "") return { kind: "garbled", id, text: misfitting };
  return { kind: "reply", id, topic, data };
}
