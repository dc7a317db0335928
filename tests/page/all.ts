import { useLanguage } from "../../terminal/page/src/texts/texts";
import "./alerts.test";
import "./connection.test";
import "./format.test";
import "./kept.test";
import "./orders.test";
import "./pictures.test";
import "./prices.test";
import "./store.test";
import "./ticket.test";
import "./watchlist.test";
import "./wire.test";

useLanguage("en");
