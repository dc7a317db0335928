// What Preact's own types leave out.
declare namespace JSX {
  interface IntrinsicAttributes {
    key?: string | number; // of every component
  }
  interface DOMAttributes {
    onCancel?: GenericEventHandler; // of a dialog
  }
}
