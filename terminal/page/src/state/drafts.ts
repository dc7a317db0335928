import { Platform } from "../platform";
import { Ticket } from "../ticket/ticket";

interface Stored {
  index: number; // the account whose ticket was filled in last; 0: none
  tickets: { [index: number]: Ticket };
}

function read(text: string): Stored {
  try {
    const stored = JSON.parse(text) as Stored;
    if (typeof stored.tickets === "object" && stored.tickets !== null) return stored;
  } catch {
    // written by another version: nothing is filled in
  }
  return { index: 0, tickets: {} };
}

// The ticket that is filled in for each account, kept on the device until its order is sent or it is cleared.
export class Drafts {
  private stored: Stored;

  constructor(private readonly platform: Platform) {
    this.stored = read(platform.recall("drafts"));
  }

  get index(): number {
    return this.stored.index;
  }

  of(index: number): Ticket | undefined {
    return this.stored.tickets[index];
  }

  get current(): Ticket | undefined {
    return this.of(this.stored.index);
  }

  set(ticket: Ticket): void {
    this.write({ index: ticket.index, tickets: { ...this.stored.tickets, [ticket.index]: ticket } });
  }

  drop(index: number): void {
    const tickets = { ...this.stored.tickets };
    delete tickets[index];
    this.write({ index, tickets });
  }

  clear(): void {
    this.stored = { index: 0, tickets: {} };
    this.platform.remember("drafts", "");
  }

  private write(stored: Stored): void {
    this.stored = stored;
    this.platform.remember("drafts", JSON.stringify(stored));
  }
}
