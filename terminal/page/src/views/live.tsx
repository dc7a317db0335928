import { Component } from "preact";

interface Props {
  code?: number; // of the instrument whose price it shows; none: it shows those of several
  draw: () => unknown;
}

const shown = new Set<Live>();

// A part of a view that follows the prices: of all the page, it alone is drawn again when one has come.
export class Live extends Component<Props, {}> {
  componentDidMount() {
    shown.add(this);
  }

  componentWillUnmount() {
    shown.delete(this);
  }

  render() {
    return this.props.draw() as JSX.Element;
  }
}

export function redrawLive(codes: ReadonlySet<number>): void {
  for (const each of shown) {
    const { code } = each.props;
    if (code === undefined || codes.has(code)) each.forceUpdate();
  }
}
