// Every text of the page itself, Chinese and English. What the terminal says is shown as it came.

export type Language = "zh" | "en";

const kTexts = {
  // frame
  skip: ["跳到内容", "Skip to content"],
  views: ["页面", "Views"],
  assets: ["资产", "Assets"],
  positions: ["持仓", "Positions"],
  orders: ["委托", "Orders"],
  fills: ["成交", "Fills"],
  monitor: ["监控", "Monitor"],
  settings: ["设置", "Settings"],
  trade: ["下单", "Trade"],
  close: ["关闭", "Close"],
  back: ["返回", "Back"],
  refresh: ["刷新{0}", "Refresh {0}"],
  details: ["{0}，详情", "{0}, details"],
  account: ["账户", "Account"],
  allAccounts: ["全部账户", "All accounts"],
  total: ["合计", "Total"],
  dismiss: ["知道了", "Dismiss"],

  // connection
  connecting: ["正在连接", "Connecting"],
  online: ["已连接", "Connected"],
  off: ["未连接", "Not connected"],
  waiting: ["连接已断开", "Disconnected"],
  waitingLong: ["连接已断开，以下数据已过时。{0} 秒后重连。", "Disconnected: the figures are stale. Next attempt in {0} s."],
  connectingLong: ["正在连接终端，以下数据已过时。", "Connecting to the terminal: the figures are stale."],
  replaced: ["已在别处打开", "Open elsewhere"],
  replacedLong: ["本页已在另一个标签页中打开，此处已停止更新。", "This page was opened in another tab; it no longer updates here."],
  retryNow: ["立即重连", "Retry now"],
  useHere: ["在此使用", "Use it here"],
  unsent: ["未连接，请求没有发出。", "Not connected: nothing was sent."],
  lost: ["回复丢失，是否执行以列表为准。", "The reply was lost: the lists show what was done."],
  garbled: ["终端的回复无法读取：{0}", "The terminal's reply cannot be read: {0}"],

  // login
  login: ["登录", "Log in"],
  token: ["令牌", "Token"],
  tokenHint: [
    "打开终端启动时打印的链接即可登录，或在此粘贴令牌。",
    "Open the link that the terminal printed when it started, or paste the token here.",
  ],
  rememberHint: ["令牌保存在此设备上，可在设置中清除。", "The token is kept on this device until you forget it in the settings."],
  loggedOut: ["登录失效，请用新的令牌登录。", "This token is no longer valid: log in with another one."],

  blind: [
    "此令牌没有查看权限，本页无法显示数据。请用有查看权限的令牌登录。",
    "This token has no right to see, and the page nothing to show: log in with one that has.",
  ],

  // lists
  justNow: ["刚刚", "just now"],
  ago: ["{0} {1}前", "{0} {1} ago"],
  s: ["秒", "s"],
  min: ["分钟", "min"],
  h: ["小时", "h"],
  stale: ["已过时", "stale"],
  loading: ["正在读取…", "Loading…"],
  notLoaded: ["尚无数据", "No data yet"],
  nothing: ["没有记录", "Nothing here"],
  rows: ["{0} 条", "{0}"],

  // assets
  accounts: ["账户", "Accounts"],
  classes: ["品种", "Classes"],
  credit: ["信用", "Credit"],
  margin: ["保证金", "Margin"],
  offline: ["未登录", "Logged out"],
  market1: ["期货", "Futures"],
  market2: ["股票", "Stocks"],
  market8: ["期权", "Options"],
  market16: ["信用", "Credit"],
  floating: ["浮动盈亏", "Floating profit"],
  noCredit: ["没有信用账户", "No account has credit terms"],
  noMargin: ["该账户没有带保证金率的合约", "No instrument of this account has a margin rate"],

  // trading words
  side0: ["未知", "Unknown"],
  side1: ["买入", "Buy"],
  side2: ["卖出", "Sell"],
  side3: ["融资买入", "Margin buy"],
  side4: ["融券卖出", "Short sell"],
  side5: ["买券还券", "Buy to return"],
  side6: ["卖券还款", "Sell to repay"],
  side7: ["直接还款", "Return money"],
  side8: ["直接还券", "Return securities"],
  offset0: ["", ""],
  offset1: ["开仓", "Open"],
  offset2: ["开仓", "Open"],
  offset3: ["自动开平", "Auto"],
  offset4: ["平仓", "Close"],
  offset5: ["平今", "Close today"],
  offset6: ["平昨", "Close yesterday"],
  offset7: ["平仓", "Close"],
  limit: ["限价", "Limit"],
  market: ["市价", "Market"],
  status1: ["未成交", "Working"],
  status2: ["已成交", "Filled"],
  status3: ["已撤单", "Cancelled"],
  status4: ["已拒绝", "Refused"],
  long: ["多", "Long"],
  short: ["空", "Short"],

  // orders
  cancel: ["撤单", "Cancel"],
  cancelOf: ["撤单：{0}", "Cancel {0}"],
  listMoved: ["列表刚刚变动，请再点一次", "The list has just moved: tap again"],
  cancelSent: ["撤单请求已发出：{0}", "Cancel sent: {0}"],
  underWay: ["等待结果的委托", "Orders awaiting their outcome"],
  sending: ["正在发送", "Sending"],
  unknown: ["结果未知", "Unknown"],
  missing: ["未到达", "Not placed"],
  sendingLong: ["等待终端回复。", "Waiting for the terminal's reply."],
  unknownLong: [
    "回复丢失。连接恢复后以委托列表为准，请勿重复下单。",
    "The reply was lost. The order list will tell once connected; do not place it again.",
  ],
  missingLong: [
    "委托列表中没有该委托。可用同一编号重发（不会重复成交），或放弃。",
    "The order list does not have it. Send it again under the same key, which cannot double it, or discard it.",
  ],
  untold: ["无从得知", "Cannot be told"],
  untoldLong: [
    "交易日已变，委托列表不再包含该委托。请在终端核对。",
    "The day has changed and the list no longer holds that day's orders: check at the terminal.",
  ],
  sendAgain: ["重发", "Send again"],
  discard: ["放弃", "Discard"],
  found: ["委托已到达终端：{0}", "The order did arrive: {0}"],
  filled: ["成交：{0}", "Filled: {0}"],

  // ticket
  instrument: ["合约", "Instrument"],
  search: ["代码或名称", "Code or name"],
  pick: ["请选择合约", "Pick an instrument"],
  noMatch: ["没有匹配的合约", "No instrument matches"],
  side: ["买卖", "Side"],
  offset: ["开平", "Offset"],
  priceType: ["价格类型", "Price type"],
  price: ["价格", "Price"],
  volume: ["数量", "Volume"],
  less: ["减少{0}", "Less {0}"],
  more: ["增加{0}", "More {0}"],
  last: ["最新", "Last"],
  bid: ["买一", "Bid"],
  ask: ["卖一", "Ask"],
  limits: ["涨跌停", "Limits"],
  value: ["金额", "Value"],
  review: ["核对委托", "Review order"],
  confirmOrder: ["确认委托", "Confirm order"],
  confirmSide: ["确认{0}", "Confirm: {0}"],
  edit: ["修改", "Edit"],
  orderSent: ["委托已提交：{0}", "Order taken: {0}"],
  marketPrice: ["对手价", "Opposite quote"],
  badPrice: ["价格应为 {0} 的整数倍，在 {1} 至 {2} 之间。", "The price must be a multiple of {0} from {1} to {2}."],
  badVolume: ["数量应为 1 至 {0} 的整数。", "The volume must be a whole number from 1 to {0}."],
  badLot: ["买入数量应为 {0} 的整数倍。", "Purchases must be a multiple of {0}."],
  noAccount: ["没有可以下单的账户。", "No account may place orders."],

  // monitor
  differences: ["差异", "Targets"],
  sync: ["同步单", "Sync orders"],
  manual: ["手工头寸", "Manual"],
  target: ["目标", "Target"],
  held: ["持有", "Held"],
  difference: ["差", "Diff"],
  match: ["一致", "Match"],
  mismatch: ["不一致", "Differs"],
  pickAll: ["全选", "Pick all"],
  placePicked: ["同步 {0} 笔", "Place {0}"],
  placeQuestion: ["同步以下 {0} 笔委托？", "Orders to place: {0}"],
  place: ["确认同步", "Place them"],
  placed: ["已提交 {0} 笔同步委托", "Synchronising orders sent: {0}"],
  inSync: ["没有需要同步的委托", "Everything is in step: no orders to place"],
  addManual: ["新增手工头寸", "Add manual position"],
  editManual: ["修改手工头寸", "Edit manual position"],
  editOf: ["修改：{0}", "Edit {0}"],
  clear: ["清除", "Clear"],
  clearOf: ["清除：{0}", "Clear {0}"],
  clearQuestion: ["清除 {0} 的手工头寸？", "Clear the manual position of {0}?"],
  save: ["保存", "Save"],
  saved: ["手工头寸已保存：{0}", "Manual position saved: {0}"],
  cleared: ["手工头寸已清除：{0}", "Manual position cleared: {0}"],
  abort: ["取消", "Keep"],
  badPositions: ["头寸应为不小于 0 的整数。", "Positions must be whole numbers, 0 or more."],

  // settings
  language: ["语言", "Language"],
  device: ["此设备", "This device"],
  tokenName: ["令牌名称", "Token name"],
  rights: ["权限", "Rights"],
  right_see: ["查看", "see"],
  right_cancel: ["撤单", "cancel"],
  right_trade: ["交易", "trade"],
  terminal: ["终端", "Terminal"],
  forget: ["忘记此设备", "Forget this device"],
  forgetHint: ["清除保存的令牌并退出。", "Removes the token kept here and logs out."],
  gainHint: ["红色为盈，绿色为亏，并带正负号。", "Red is a gain, green a loss, each with its sign."],
} as const;

export type TextName = keyof typeof kTexts;

let language: Language = "zh";

export function currentLanguage(): Language {
  return language;
}

export function useLanguage(wanted: Language): void {
  language = wanted;
  document.documentElement.lang = wanted === "zh" ? "zh-CN" : "en";
}

export function t(name: TextName, ...values: (string | number)[]): string {
  const text: string = kTexts[name][language === "zh" ? 0 : 1];
  return text.replace(/\{(\d)\}/g, (_, place: string) => String(values[Number(place)]));
}

// Of a number on the wire: "status2". One that has no name is shown as it is.
export function named(group: "side" | "offset" | "status" | "market", value: number): string {
  const name = `${group}${value}`;
  return name in kTexts ? t(name as TextName) : String(value);
}
