// What Preact's own types leave out.
declare namespace JSX {
  interface IntrinsicAttributes {
    key?: string | number; // of every component
  }
  interface DOMAttributes {
    onCancel?: GenericEventHandler; // of a dialog
    onToggle?: GenericEventHandler; // of details
    onPointerMove?: (event: PointerEvent) => void;
    onPointerDown?: (event: PointerEvent) => void;
    onPointerLeave?: (event: PointerEvent) => void;
  }
}
