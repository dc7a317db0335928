import { currentLanguage } from "./texts";

// What the terminal's refusals mean in the other language. {0}, {1} … are the groups of the pattern.
const kRefusals: readonly (readonly [RegExp, string])[] = [
  // Chinese, from the trading desk
  [/^账户 (.*) 未登录, 不能委托$/, "Account {0} is logged out and takes no orders"],
  [/^账户 (.*) 没有普通委托权限$/, "Account {0} may not place orders"],
  [/^账户 (.*) 不能交易 (.*)$/, "Account {0} cannot trade {1}"],
  [/^账户 (.*) 不支持买卖方向 (.*)$/, "Account {0} does not take side {1}"],
  [/^账户 (.*) 在该合约上没有委托 (.*)$/, "Account {0} has no order {1} in this instrument"],
  [/^委托 (.*) 已全部成交, 不能撤单$/, "Order {0} is filled and cannot be cancelled"],
  [/^委托 (.*) 已撤单, 不能撤单$/, "Order {0} is cancelled already"],
  [/^委托 (.*) 是废单, 不能撤单$/, "Order {0} was refused and cannot be cancelled"],
  [/^开平标志 (.*) 无效$/, "Offset {0} is invalid"],
  [/^价格类型 (.*) 无效.*$/, "Price type {0} is invalid"],
  [/^委托价格 (.*) 超出涨跌停范围 (.*) 至 (.*)$/, "Price {0} is outside the limits {1} to {2}"],
  [/^委托价格 (.*) 不是最小变动价位 (.*) 的整数倍$/, "Price {0} is not a multiple of the tick {1}"],
  [/^委托数量 (.*) 必须大于 0$/, "Volume {0} must be above 0"],
  [/^委托数量 (.*) 超过单笔上限 (.*)$/, "Volume {0} is above the limit of {1} for one order"],
  [/^委托数量 (.*) 不是 (.*) 的整数倍$/, "Volume {0} is not a multiple of {1}"],
  [/^委托来源 (.*) 字节, 超过上限 (.*)$/, "The source text has {0} bytes, above the limit of {1}"],
  [/^买卖方向 (.*) 与开平标志 (.*) 不符$/, "Side {0} does not go with offset {1}"],
  [/^可平数量不足: 委托 (.*), 可平 (.*)$/, "Not enough to close: ordered {0}, closable {1}"],
  [/^可用资金不足: 需要 (.*), 可用 (.*)$/, "Not enough funds: needs {0}, available {1}"],
  [/^保证金可用余额不足: 需要 (.*), 可用 (.*)$/, "Not enough margin: needs {0}, available {1}"],
  [/^融资额度不足: 需要 (.*), 可用 (.*)$/, "Above the limit of margin purchases: needs {0}, left {1}"],
  [/^融券额度不足: 需要 (.*), 可用 (.*)$/, "Above the limit of short sales: needs {0}, left {1}"],
  [/^用户撤单$/, "Cancelled by the user"],
  [/^收盘自动撤单$/, "Cancelled at the close"],
  [
    /^数据库 (.*) 无法写入 \((.*)\), 未作任何更改: (.*)$/,
    "The terminal cannot write to {0} ({1}) and changed nothing: {2}",
  ],
  [
    /^数据库 (.*) 写入失败 \((.*)\), 结果未知: 请勿重新提交, 待恢复后查看列表$/,
    "Writing to {0} failed ({1}) and the outcome is not known: do not send it again, look at the lists later",
  ],
  [
    /^数据库 (.*) 写入失败 \((.*)\), 权益历史暂停记录: (.*)$/,
    "Writing to {0} failed ({1}), so the history has a gap: {2}",
  ],
  [/^数据库 (.*) 读取失败 \((.*)\): (.*)$/, "The terminal cannot read {0} ({1}): {2}"],
  [/^数据库已恢复写入: 此前结果未知的更改均未执行$/, "The terminal can write again: no change of unknown outcome was made"],
  [/^请释放磁盘空间$/, "free some space on its disk"],
  [/^请使该文件及其目录可写$/, "make the file and its folder writable"],
  [/^请检查磁盘$/, "check the disk"],
  [/^请停止正在使用它的程序$/, "stop the program that uses it"],
  [/^请移走该文件, 或用 --data 指定其他目录$/, "move the file away, or name another folder with --data"],
  [/^头寸监控同步委托被拒绝 \((.*)\): (.*)$/, "A synchronising order was refused ({0}): {1}"],
  [
    /^手工头寸无效 \((.*)\): 多 (.*), 空 (.*), 应在 0 至 (.*) 之间$/,
    "Manual position ({0}): long {1}, short {2}, must be from 0 to {3}",
  ],
  [/^手工头寸未能保存: (.*)$/, "The manual positions were not saved: {0}"],
  [/^未知的功能: (.*)$/, "The terminal does not know {0}"],
  [/^没有账户 (.*)$/, "There is no account {0}"],
  [/^没有合约 (.*)$/, "There is no instrument {0}"],
  [/^没有 (.*) 的保证金率$/, "There is no margin rate of {0}"],
  [/^暂不支持条件单$/, "Conditional orders are not supported"],

  // English, from the gateway and the library
  [/^this token may not (.*): its rights are (.*)$/, "此令牌没有 {0} 权限，现有权限：{1}"],
  [/^wrong token: .*$/, "令牌不正确，请使用终端显示的令牌"],
  [/^can not find tid by index:(.*)$/, "没有编号为 {0} 的账户"],
  [/^can not find code property by hashcode:(.*)$/, "没有编号为 {0} 的合约"],
  [/^(\d+) requests wait for their reply already$/, "未回复的请求过多（{0} 个），请稍后再试"],
  [/^the terminal cannot remember this request, so it is not carried out: (.*)$/, "终端无法记录该请求，没有执行：{0}"],
  [/^the terminal cannot look up the key of this request, so it does nothing now: (.*)$/, "终端无法查询该请求的标识，现在不执行任何操作：{0}"],
  [/^the outcome of this request is not known.*$/, "该请求的结果未知，请先查看委托列表"],
  [/^the key (.*) belongs to another request$/, "编号 {0} 已用于另一请求"],
  [/^(.*) has more than (\d+) elements: ask in parts$/, "一次最多 {1} 条，请分批提交"],
  [/^requests of this token with 8 MiB wait already$/, "未回复的请求过大，请稍后再试"],
  [/^gateway\.db has reached its limit, so it takes no more keys: .*$/, "网关数据库已达上限，没有执行；请以更大的 --gateway-size 启动终端"],
  [/^this token has no rights: make another$/, "此令牌没有任何权限，请使用另一令牌"],
  [/^this relay has not seen a terminal with the name (.*)$/, "此中继未见过名为 {0} 的终端"],
  [/^the relay has no connection to the terminals now; try again$/, "中继目前与终端失去连接，请稍后再试"],
  [/^the relay has only just connected; try again$/, "中继刚刚建立连接，请稍后再试"],
  [/^too many wrong logins from (.*): wait a minute$/, "{0} 登录失败次数过多，请一分钟后再试"],
  [/^(\d+) connections with this token are open already$/, "此令牌已有 {0} 个连接"],
  [/^the tokens cannot be read: (.*)$/, "终端无法读取令牌：{0}"],
  [/^there is no instrument (.*)$/, "没有合约 {0}"],
  [/^this token has (\d+) alerts already: clear some$/, "此令牌已有 {0} 个预警，请先删除一些"],
  [/^the alert cannot be stored: (.*)$/, "预警无法保存：{0}"],
  [/^the alerts cannot be cleared: (.*)$/, "预警无法删除：{0}"],
  [/^query credit info error$/, "无法查询两融信息"],
];

function isChinese(text: string): boolean {
  return /[\u4e00-\u9fff]/.test(text);
}

// What is known of a text; a part of it may be a refusal of its own.
function meaningOf(text: string): string | undefined {
  for (const [pattern, meaning] of kRefusals) {
    const found = pattern.exec(text);
    if (found === null) continue;
    const parts = found.slice(1).map((part) => meaningOf(part) ?? part);
    return meaning.replace(/\{(\d)\}/g, (_, place: string) => parts[Number(place)]);
  }
  return undefined;
}

// The terminal's own text, under its meaning in the page's language if that is another one.
export function explained(text: string): string {
  if (isChinese(text) === (currentLanguage() === "zh")) return text;
  const meaning = meaningOf(text);
  return meaning === undefined ? text : `${meaning}\n${text}`;
}
