import "./list.css";
import { Component, h } from "preact";
import { store } from "../app";
import { kRowHeights, width } from "../layout";
import { Held, ListName } from "../state/lists";
import { ofAccount } from "../state/wanted";
import { t, TextName } from "../texts/texts";
import { OfAccount } from "../wire/values";
import { Pick } from "./controls";
import { Live } from "./live";
import { ageText, Icon, Note, staleText } from "./parts";
import { Rows } from "./rows";

// A figure of each row: a column of the table on a wide screen, and a way to sort on every one.
export interface Column<Row> {
  name: TextName;
  cell: (row: Row) => unknown;
  value?: (row: Row) => number | string; // by which rows are sorted
  isNumber?: boolean; // aligned to the right, and sorted downward first
  share?: number; // of the table's width
}

interface Sort {
  by: string; // the column's name; empty: the list's own order
  isDown: boolean;
}

interface Props<Row> {
  name: ListName;
  title: string;
  rows: Row[]; // all of the list; those of the account that is picked are shown, unless `isOfAll`
  nameOf: (row: Row) => string;
  columns: readonly Column<Row>[];
  card: (row: Row) => unknown; // the row on a phone
  kindOf?: (row: Row) => Exclude<keyof typeof kRowHeights, "table">;
  onOpen?: (row: Row) => void;
  actions?: (row: Row) => unknown;
  hasOwnOrder?: boolean; // is not to be sorted
  wrap?: (row: Row, content: unknown) => JSX.Element; // in place of the button that opens the row
  follow?: (row: Row) => Row; // at the price that has come since; its instrument is then watched
  followed?: TextName; // said if it has followed
  isOfAll?: boolean; // its rows are of no account
  fits?: (row: Row) => boolean;
  fitsBy?: string; // changes with what `fits` looks for
  tools?: unknown; // beside the choice of an account
  total?: (rows: Row[]) => unknown;
  caption?: string; // of the figures at the right, on a phone
  empty?: string;
  children?: unknown;
}

const kRefresh = "M20 11a8 8 0 1 0-2.3 6.3M20 4v7h-7";
const sorts: { [List in ListName]?: Sort } = {}; // as left, for the next time that the list is opened

export const rowsOfAccount = <Row extends OfAccount>(rows: Row[]): Row[] => ofAccount(rows, store.account);

const codeOf = (row: object): number | undefined => (row as { hashCode?: number }).hashCode;

function noteSeen(rows: readonly object[]): void {
  store.seenCodes = rows.flatMap((row) => codeOf(row) ?? []);
}

function compare(a: number | string, b: number | string): number {
  return typeof a === "number" && typeof b === "number" ? a - b : String(a).localeCompare(String(b), "zh");
}

// A list under its heading: picked by account, sorted, greyed if it is stale.
export class List<Row extends object> extends Component<Props<Row>, {}> {
  private shown: { from: unknown[]; by: string; rows: Row[] } = { from: [], by: "", rows: [] };

  private get sort(): Sort {
    return sorts[this.props.name] ?? { by: "", isDown: false };
  }

  private readonly sortBy = (by: string) => {
    const { sort } = this;
    const column = this.props.columns.find((each) => each.name === by);
    const isDown = sort.by === by ? !sort.isDown : column?.isNumber === true;
    sorts[this.props.name] = { by, isDown };
    store.update();
  };

  // Sorted anew only if something has changed: with thousands of rows that takes its time.
  private rows(): Row[] {
    const { rows, columns, fits, fitsBy } = this.props;
    const { by, isDown } = this.sort;
    const what = `${store.account}:${by}:${isDown}:${fitsBy ?? ""}`;
    if (this.shown.from === rows && this.shown.by === what) return this.shown.rows;
    const value = columns.find((each) => each.name === by)?.value;
    const picked = ofAccount(rows, this.props.isOfAll ? 0 : store.account).filter((row) => fits?.(row) ?? true);
    const sign = isDown ? -1 : 1;
    if (value !== undefined) picked.sort((a, b) => sign * compare(value(a), value(b)));
    this.shown = { from: rows, by: what, rows: picked };
    return picked;
  }

  // Rows keep their places while they follow the prices.
  private row(row: Row) {
    const { follow } = this.props;
    if (follow === undefined) return this.drawn(row);
    return <Live code={codeOf(row)} draw={() => this.drawn(follow(row))} />;
  }

  private drawn(row: Row) {
    const { card, columns, onOpen, wrap, actions } = this.props;
    const cells = () =>
      columns.map((column) => (
        <span key={column.name} class={column.isNumber ? "cell number" : "cell"}>
          {column.cell(row)}
        </span>
      ));
    const content = width() === "desk" ? cells() : card(row);
    const main =
      wrap?.(row, content) ??
      (onOpen === undefined ? (
        <span class="row-main">{content}</span>
      ) : (
        <button class="row-main" onClick={() => onOpen(row)}>
          {content}
        </button>
      ));
    return (
      <div class={actions === undefined ? "row-pair" : "row-pair acting"}>
        {main}
        {actions === undefined ? null : <span class="row-actions">{actions(row)}</span>}
      </div>
    );
  }

  private headings() {
    const { sort } = this;
    const cells = this.props.columns.map((column) => {
      const isBy = sort.by === column.name;
      const order = isBy ? (sort.isDown ? "descending" : "ascending") : "none";
      return (
        <span key={column.name} role="columnheader" aria-sort={order} class={column.isNumber ? "cell number" : "cell"}>
          {column.value === undefined ? (
            t(column.name)
          ) : (
            <button onClick={() => this.sortBy(column.name)}>
              {t(column.name)}
              <i aria-hidden="true">{isBy ? (sort.isDown ? " ↓" : " ↑") : ""}</i>
            </button>
          )}
        </span>
      );
    });
    return (
      <div class={this.props.actions === undefined ? "headings" : "headings acting"} role="row">
        {this.props.wrap === undefined ? (
          <span class="row-main">{cells}</span>
        ) : (
          <span class="row-main check">
            <span class="row-text">{cells}</span>
          </span>
        )}
      </div>
    );
  }

  private sortPick() {
    const { sort } = this;
    const columns = this.props.columns.filter((column) => column.value !== undefined);
    const options: [string, string][] = [["", t("byOrder")]];
    for (const column of columns) options.push([column.name, t(column.name)]);
    return [
      <Pick label={t("sortBy")} value={sort.by} options={options} onPick={this.sortBy} />,
      sort.by === "" ? null : (
        <button class="icon" aria-label={t(sort.isDown ? "downward" : "upward")} onClick={() => this.sortBy(sort.by)}>
          {sort.isDown ? "↓" : "↑"}
        </button>
      ),
    ];
  }

  render() {
    const { props } = this;
    const rows = this.rows();
    const isTable = width() === "desk";
    const columns = `--columns: ${props.columns.map((column) => `minmax(0, ${column.share ?? 1}fr)`).join(" ")}`;
    return (
      <ListFrame
        name={props.name}
        title={props.title}
        count={rows.length}
        empty={props.rows.length > 0 ? t("nothingFits") : props.empty}
        tools={[props.isOfAll ? null : <AccountPick />, isTable || props.hasOwnOrder ? null : this.sortPick(), props.tools]}
        followed={rows.some((row) => props.follow !== undefined && props.follow(row) !== row) ? props.followed : undefined}
        total={props.total?.(rows)}
        caption={isTable ? undefined : props.caption}
      >
        <div class={isTable ? "table" : ""} style={columns}>
          {isTable && rows.length > 0 ? this.headings() : null}
          <Rows
            key={isTable ? "table" : "cards"} // measured anew
            rows={rows}
            nameOf={props.nameOf}
            kindOf={props.kindOf ?? (() => "pair")}
            render={(row: Row) => this.row(row)}
            onSeen={this.props.follow === undefined ? undefined : noteSeen}
          />
        </div>
        {props.children}
      </ListFrame>
    );
  }
}

function AccountPick() {
  const { rows } = store.lists.accounts;
  const options: [number, string][] = [[0, t("allAccounts")]];
  for (const account of rows) options.push([account.index, account.userCode]);
  return (
    <Pick
      label={t("account")}
      value={store.account}
      options={options}
      onPick={(index) => store.pickAccount(Number(index))}
    />
  );
}

// A list under its heading: how many rows, how old, why it failed; greyed if it is stale.
export function ListFrame(props: {
  name: ListName;
  title: string;
  count: number;
  isPicture?: boolean; // whose points nobody counts
  followed?: TextName; // how its figures have changed since the list
  tools?: unknown;
  total?: unknown;
  caption?: string;
  empty?: string;
  children?: unknown;
}) {
  const list = store.lists[props.name] as Held<unknown[]>;
  const isStale = store.isStale(props.name);
  const age = (
    <span class="age">
      {list.at === 0
        ? t("notLoaded")
        : `${props.isPicture ? "" : `${t("rows", props.count)} · `}${isStale ? staleText(list.at) : ageText(list.at, store.now)}`}
      {props.followed === undefined ? null : ` · ${t(props.followed)}`}
      {isStale && list.at > 0 ? <b class="stale-mark"> · {t("stale")}</b> : null}
    </span>
  );
  return (
    <section class={isStale ? "list stale" : "list"} aria-label={props.title} data-list={props.name}>
      <div class="tools">
        {props.tools ?? age}
        <button class="icon" aria-label={t("refresh", props.title)} onClick={() => store.asker.askNow([props.name])}>
          <Icon path={kRefresh} />
        </button>
      </div>
      {props.tools === undefined ? null : (
        <div class="list-head">
          {props.total}
          {age}
          {props.caption === undefined ? null : <small class="caption">{props.caption}</small>}
        </div>
      )}
      <Note text={list.failure} />
      {list.at > 0 && props.count === 0 ? <p class="empty">{props.empty ?? t("nothing")}</p> : null}
      {list.at === 0 && list.isAsked ? <p class="empty">{t("loading")}</p> : null}
      {props.children}
    </section>
  );
}
