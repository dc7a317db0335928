import { Component, h } from "preact";
import { kRowHeights, width } from "../layout";

type Kind = Exclude<keyof typeof kRowHeights, "table">;

interface Props<Row> {
  rows: readonly Row[];
  nameOf: (row: Row) => string;
  kindOf: (row: Row) => Kind; // says how high the row is, if its text needs no more
  render: (row: Row) => JSX.Element;
  onSeen?: (rows: readonly Row[]) => void; // those on the screen, and some beyond
}

const kBeyond = 6; // rows above and below those in sight, so that a flick finds them there
const kFirstSeen = 24;
const kLine = 1; // pixel between rows

// A long list: only the rows in sight are in the page, each at its place in a box of the list's full height. A row whose
// text wraps, because it is long or the font is large, becomes as high as it needs: nothing is cut.
export class Rows<Row> extends Component<Props<Row>, { first: number; last: number }> {
  state = { first: 0, last: kFirstSeen };
  private heights: { [kind: string]: number } = {}; // in pixels
  private higher = new Map<string, number>(); // rows that need more, by name
  private tops: number[] = [0];
  private laidOut: readonly Row[] | null = null;
  private forWidth = "";
  private isDropping = false;
  private readonly look = () => this.measure(false);

  componentDidMount() {
    addEventListener("scroll", this.look, { passive: true });
    addEventListener("resize", this.look);
    this.measure(true);
  }

  componentDidUpdate() {
    if (!this.isDropping) this.measure(true);
  }

  componentWillUnmount() {
    removeEventListener("scroll", this.look);
    removeEventListener("resize", this.look);
  }

  private heightOf(row: Row): number {
    const kind = width() === "desk" ? "table" : this.props.kindOf(row);
    if (this.heights[kind] === undefined) {
      const rem = parseFloat(getComputedStyle(document.documentElement).fontSize);
      this.heights[kind] = kRowHeights[kind] * rem;
    }
    const own = this.higher.size === 0 ? undefined : this.higher.get(this.props.nameOf(row));
    return Math.max(this.heights[kind], own ?? 0);
  }

  // The top of each row, and the end of the last.
  private layOut(): void {
    const { rows } = this.props;
    if (this.laidOut === rows) return;
    this.laidOut = rows;
    this.tops = new Array<number>(rows.length + 1);
    this.tops[0] = 0;
    rows.forEach((row, place) => (this.tops[place + 1] = this.tops[place] + this.heightOf(row)));
  }

  // The first row that ends below `at`.
  private placeAt(at: number): number {
    let low = 0;
    let high = this.tops.length - 1;
    while (low < high) {
      const middle = (low + high) >> 1;
      if (this.tops[middle + 1] > at) high = middle;
      else low = middle + 1;
    }
    return low;
  }

  // Rows that have just been drawn may need more height.
  private measure(isDrawn: boolean) {
    const forWidth = `${innerWidth} ${width()}`;
    if (this.forWidth !== forWidth) {
      this.forWidth = forWidth;
      this.heights = {};
      this.higher.clear();
      this.laidOut = null;
      return this.setState({}); // what is there now was laid out for the old width
    }
    const isHigher = isDrawn && this.grow();
    this.layOut();
    const above = -this.base.getBoundingClientRect().top;
    const first = Math.max(0, this.placeAt(above) - kBeyond);
    const last = this.placeAt(above + innerHeight) + kBeyond;
    this.props.onSeen?.(this.props.rows.slice(first, last));
    if (isHigher || first !== this.state.first || last !== this.state.last) {
      this.dropAbove(first);
      this.setState({ first, last });
    }
  }

  // Preact takes out one row at the top as it is, but if more leave at once, it moves all others, and each of them would
  // be laid out again.
  private dropAbove(first: number) {
    if (first >= this.state.last) return; // none of the rows stays
    this.isDropping = true;
    while (this.state.first + 1 < first) {
      this.state.first++;
      this.forceUpdate();
    }
    this.isDropping = false;
  }

  // Whether a row in sight needs more than it has. The first row in sight stays in its place.
  private grow(): boolean {
    let isHigher = false;
    for (const child of [...this.base.children] as HTMLElement[]) {
      const needed = Math.ceil((child.firstElementChild as HTMLElement).getBoundingClientRect().height);
      if (needed <= Math.ceil(child.getBoundingClientRect().height)) continue;
      this.higher.set(child.dataset.name as string, needed + kLine);
      isHigher = true;
    }
    if (!isHigher) return false;
    const { first } = this.state;
    const before = this.tops[first] ?? 0;
    this.laidOut = null;
    this.layOut();
    const moved = (this.tops[first] ?? 0) - before;
    if (moved > 0) scrollBy(0, moved);
    return true;
  }

  render() {
    this.layOut();
    const { rows, nameOf, render } = this.props;
    const { first, last } = this.state;
    return (
      <div class="rows" role="list" style={{ height: `${this.tops[rows.length]}px` }}>
        {rows.slice(first, last).map((row, place) => (
          <div
            key={nameOf(row)}
            class="row"
            data-name={nameOf(row)}
            role="listitem"
            aria-setsize={String(rows.length)}
            aria-posinset={String(first + place + 1)}
            style={{
              height: `${this.heightOf(row)}px`,
              top: `${this.tops[first + place]}px`,
            }}
          >
            {render(row)}
          </div>
        ))}
      </div>
    );
  }
}
