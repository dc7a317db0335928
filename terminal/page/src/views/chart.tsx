import { Component, h } from "preact";
import { kBox, nearest, pathOf, Point, scaleOf } from "../curve";
import { t } from "../texts/texts";
import { toneOf } from "./parts";

// Pictures of numbers. Each has a text for screen readers, and the figures themselves in a table behind it.

// The rows are made when it is opened.
export class TableBehind extends Component<{ name: string; head: readonly string[]; rows: () => unknown[][] }, { isOpen: boolean }> {
  state = { isOpen: false };

  render() {
    const { name, head, rows } = this.props;
    const onToggle = (event: Event) => this.setState({ isOpen: (event.currentTarget as HTMLDetailsElement).open });
    return (
      <details class="behind" onToggle={onToggle}>
        <summary aria-label={`${name}: ${t("asTable")}`}>{t("asTable")}</summary>
        {this.state.isOpen ? (
          <table>
            <thead>
              <tr>
                {head.map((text) => (
                  <th scope="col">{text}</th>
                ))}
              </tr>
            </thead>
            <tbody>
              {rows().map(([first, ...others]) => (
                <tr>
                  <th scope="row">{first}</th>
                  {others.map((cell) => (
                    <td>{cell}</td>
                  ))}
                </tr>
              ))}
            </tbody>
          </table>
        ) : null}
      </details>
    );
  }
}

interface Mark {
  time: number;
  amount: number;
}

interface CurveProps {
  points: readonly Point[]; // at least one, in order of time
  base: number; // drawn as a line
  gain: number; // whose sign gives the colour
  marks?: readonly Mark[];
  label: string; // for screen readers
  valueText: (value: number) => string;
  timeText: (time: number) => string;
  head: (at: number) => unknown; // above it, for the point under the finger or the last
}

// A curve over time. A finger or a mouse on it shows the point that it is at.
export class Curve extends Component<CurveProps, { at: number | null }> {
  state = { at: null };

  private readonly look = (event: PointerEvent) => {
    const box = (event.currentTarget as HTMLElement).getBoundingClientRect();
    this.setState({ at: nearest(this.props.points, (event.clientX - box.left) / box.width) });
  };
  private readonly leave = () => this.setState({ at: null });

  render() {
    const { points, base, gain, marks = [], valueText, timeText } = this.props;
    const scale = scaleOf(points, base);
    const path = pathOf(points, scale);
    const last = points.length - 1;
    const at = Math.min(this.state.at ?? last, last);
    const baseline = scale.y(base);
    const [x, y] = [scale.x(points[at].time), scale.y(points[at].value)];
    return (
      <div class={`curve ${toneOf(gain)}`}>
        {this.props.head(at)}
        <div class="plot" onPointerMove={this.look} onPointerDown={this.look} onPointerLeave={this.leave}>
          <svg viewBox={`0 0 ${kBox.width} ${kBox.height}`} preserveAspectRatio="none" role="img" aria-label={this.props.label}>
            <path class="area" d={`${path}L${kBox.width} ${baseline}L0 ${baseline}Z`} />
            <path class="base" d={`M0 ${baseline}H${kBox.width}`} />
            {marks.map((mark) => (
              <path class={mark.amount > 0 ? "paid in" : "paid out"} d={`M${scale.x(mark.time)} 0V${kBox.height}`} />
            ))}
            <path class="line-of" d={path} />
            {this.state.at === null ? null : <path class="cursor" d={`M${x} 0V${kBox.height}`} />}
          </svg>
          <i class="dot" aria-hidden="true" style={{ left: `${x / (kBox.width / 100)}%`, top: `${y / (kBox.height / 100)}%` }} />
        </div>
        <p class="ends num">
          <span>{timeText(points[0].time)}</span>
          <span>{timeText(points[last].time)}</span>
        </p>
        <p class="ends num">
          <span>
            {t("lowest")} {valueText(scale.low)}
          </span>
          <span>
            {t("highest")} {valueText(scale.high)}
          </span>
        </p>
      </div>
    );
  }
}
