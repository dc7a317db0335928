// What Preact's own types leave out: a key on every component.
declare namespace JSX {
  interface IntrinsicAttributes {
    key?: string | number;
  }
}
