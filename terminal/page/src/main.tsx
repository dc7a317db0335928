import "../app.css";
import { h, render } from "preact";

render(<h1>pocket-terminal</h1>, document.body);
