import { Nav } from "./nav";
import { browserPlatform, takeTokenFromLink } from "./platform";
import { Store } from "./state/store";

// The one store of the page, and its address.
export const store = new Store(browserPlatform(), takeTokenFromLink());
export const nav = new Nav(store);
