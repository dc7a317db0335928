import { Component, h } from "preact";

interface Props<Row> {
  rows: Row[];
  nameOf: (row: Row) => string;
  height: number; // of a row on a phone, in rem; the same for all
  render: (row: Row) => JSX.Element;
}

const kWideHeight = 3.5; // where the lines of a row stand side by side
const kBeyond = 6; // rows above and below what is seen, so that a flick finds them there

// A long list: only the rows that can be seen stand in the page, each at its place in a box of the list's full height.
export class Rows<Row> extends Component<Props<Row>, { first: number; last: number }> {
  state = { first: 0, last: 30 };
  private readonly rem = parseFloat(getComputedStyle(document.documentElement).fontSize);
  private readonly wide = matchMedia("(min-width: 1000px)"); // as in the style sheet
  private readonly look = () => this.measure();

  componentDidMount() {
    addEventListener("scroll", this.look, { passive: true });
    addEventListener("resize", this.look);
    this.measure();
  }

  componentDidUpdate() {
    this.measure();
  }

  componentWillUnmount() {
    removeEventListener("scroll", this.look);
    removeEventListener("resize", this.look);
  }

  private height() {
    return this.wide.matches ? kWideHeight : this.props.height;
  }

  private measure() {
    const height = this.height() * this.rem;
    const above = -this.base.getBoundingClientRect().top;
    const first = Math.max(0, Math.floor(above / height) - kBeyond);
    const last = Math.max(0, Math.ceil((above + innerHeight) / height) + kBeyond);
    if (first !== this.state.first || last !== this.state.last) this.setState({ first, last });
  }

  render() {
    const { rows, nameOf } = this.props;
    const height = this.height();
    const { first, last } = this.state;
    return (
      <div class="rows" role="list" style={{ height: `${rows.length * height}rem` }}>
        {rows.slice(first, last).map((row, place) => (
          <div
            key={nameOf(row)}
            class="row"
            role="listitem"
            aria-setsize={String(rows.length)}
            aria-posinset={String(first + place + 1)}
            style={{ height: `${height}rem`, transform: `translateY(${(first + place) * height}rem)` }}
          >
            {this.props.render(row)}
          </div>
        ))}
      </div>
    );
  }
}
