import { Component, h } from "preact";
import { t } from "../texts/texts";

// The controls of forms and dialogs.

export const kSettleMs = 400; // nobody reads and taps faster

// The button of a dialog that does what the dialog asks. It takes no tap at first: the second one of a double tap on
// whatever opened the dialog would agree to something unread.
export class Confirm extends Component<
  { tone?: string; text: string; disabled: boolean; onConfirm: () => void },
  { isSettled: boolean }
> {
  state = { isSettled: false };
  private timer = 0;

  componentDidMount() {
    this.timer = window.setTimeout(() => this.setState({ isSettled: true }), kSettleMs);
  }

  componentWillUnmount() {
    clearTimeout(this.timer);
  }

  render() {
    const { tone, text, disabled, onConfirm } = this.props;
    return (
      <button class={`primary ${tone ?? ""}`} disabled={disabled || !this.state.isSettled} onClick={onConfirm}>
        {text}
      </button>
    );
  }
}

interface ChoicesProps {
  name: string;
  label: string;
  hasLabel?: boolean; // is seen, not only read out
  value: number;
  values: number[];
  text: (value: number) => string;
  onPick: (value: number) => void;
  toneOf?: (value: number) => string;
}

export function Choices(props: ChoicesProps) {
  return (
    <fieldset class="choices">
      <legend class={props.hasLabel ? "" : "hidden"}>{props.label}</legend>
      <div>
        {props.values.map((value) => (
          <label key={String(value)} class={props.toneOf?.(value) ?? ""}>
            <input
              type="radio"
              name={props.name}
              value={String(value)}
              checked={value === props.value}
              onChange={() => props.onPick(value)}
            />
            <span>{props.text(value)}</span>
          </label>
        ))}
      </div>
    </fieldset>
  );
}

// A list to pick from, without a caption of its own.
export function Pick<Value extends string | number>(props: {
  label: string;
  value: Value;
  options: readonly (readonly [Value, string])[];
  onPick: (value: string) => void;
}) {
  return (
    <label class="pick">
      <span class="hidden">{props.label}</span>
      <select
        value={String(props.value)}
        onChange={(event: Event) => props.onPick((event.target as HTMLSelectElement).value)}
      >
        {props.options.map(([value, text]) => (
          <option key={String(value)} value={String(value)}>
            {text}
          </option>
        ))}
      </select>
    </label>
  );
}

interface StepperProps {
  id: string;
  label: string;
  caption?: unknown; // in place of the label, for the eye
  value: string;
  mode: "decimal" | "numeric";
  isDisabled?: boolean;
  failure?: string;
  onChange: (value: string) => void;
  onStep: (steps: number) => void;
  children?: unknown; // beside it
}

// A number that can be typed, stepped by its buttons, or by the arrow keys.
export function Stepper(props: StepperProps) {
  const { id, label, isDisabled, onStep } = props;
  const failure = props.failure ?? "";
  const step = (name: "less" | "more", steps: number, sign: string) => (
    <button type="button" class="icon" disabled={isDisabled} aria-label={t(name, label)} onClick={() => onStep(steps)}>
      {sign}
    </button>
  );
  const onKey = (event: KeyboardEvent) => {
    const steps = { ArrowUp: 1, ArrowDown: -1 }[event.key];
    if (steps === undefined) return;
    event.preventDefault();
    onStep(steps);
  };
  return (
    <div class="field">
      <div class="stepper">
        {props.caption ?? <span aria-hidden="true">{label}</span>}
        <span class="steps">
          {step("less", -1, "−")}
          <input
            id={id}
            class="num"
            inputMode={props.mode}
            autocomplete="off"
            aria-label={label}
            aria-invalid={failure === "" ? null : "true"}
            aria-describedby={failure === "" ? null : `${id}-failure`}
            disabled={isDisabled}
            value={props.value}
            onInput={(event: Event) => props.onChange((event.target as HTMLInputElement).value)}
            onKeyDown={onKey}
          />
          {step("more", 1, "+")}
        </span>
      </div>
      {props.children}
      <FieldFailure id={id} text={failure} />
    </div>
  );
}

// What is wrong with the field `id`, below it.
export function FieldFailure(props: { id: string; text: string }) {
  return props.text === "" ? null : (
    <p class="wrong" role="alert" id={`${props.id}-failure`}>
      {props.text}
    </p>
  );
}
