// What the first view does not need, in a file of its own. It imports the start, so that what both need is one file too:
// two compress worse.
import "../main";
export { Credit, Margin } from "./credit";
export { Equity } from "./equity";
export { Exposures } from "./exposure";
export { Manual } from "./manual";
export { Differences } from "./monitor";
export { Quotes } from "./quotes";
export { Settings } from "./settings";
export { SyncOrders } from "./syncorders";
export { OrderTicket } from "./ticket";
