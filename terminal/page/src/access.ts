// What a phone logs in with: a token, or the text that a relay's link has in its place, "terminal=desk7&token=…".
export interface Access {
  terminal?: string;
  token: string;
}

export function readAccess(text: string): Access {
  const found = /^terminal=([\w-]+)&token=([\w-]+)$/.exec(text);
  return found === null ? { token: text } : { terminal: found[1], token: found[2] };
}

// Of a link, or of a token that was typed.
export function accessText(link: string): string {
  return link.trim().replace(/^.*#/, "").replace(/^token=/, "");
}
