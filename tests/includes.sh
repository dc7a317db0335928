#!/usr/bin/env bash
# Usage: includes.sh ROOT. Checks that each folder includes only the folders below it, and that one header alone
# includes rapidjson.
set -euo pipefail
cd "$1"
failed=0

# check FOLDER ALLOWED: every include of our own in FOLDER must match ALLOWED.
check() {
  local wrong
  wrong=$(grep -rnE '^#include "' "$1" --include='*.h' --include='*.cpp' | grep -vE "#include \"($2)" || true)
  if [ -n "$wrong" ]; then
    echo "$1 may not include:"
    echo "$wrong"
    failed=1
  fi
}

check host 'host/'
check vocabulary 'vocabulary/'
check pocketagent 'host/|vocabulary/|pocketagent/|decoding/requestrecords\.h|tasks/'
check serialise 'host/|vocabulary/|serialise/|pocketagent/json\.h'
check decoding 'host/|vocabulary/|decoding/|pocketagent/(json|log|topic|mobileworker)\.h'
check tasks 'host/|vocabulary/|serialise/|tasks/|decoding/requestrecords\.h|pocketagent/(requesttask|topic)\.h'
check terminal 'host/|terminal/|pocketagent/ipocketagent\.h'

# What both sides of the terminal can see; the session is where they meet.
text='terminal/(json|jsonmembers|utf8)\.h'
base="terminal/(clocks|databasecopy|digest|gatewaydatabase|health|liveprices|logging|ownersfile|plainname|rights|runmark|tokens|writetimer)\.h|$text"
meeting='terminal/(session|pages|eventloop)\.h'
sockets='terminal/(tls|securestream|certificate)\.h'
check terminal/net "terminal/(net|page)/|terminal/logging\.h|$meeting|$sockets"
check terminal/phones "host/|terminal/phones/|$base|$meeting"
program='terminal/(certificate|clocks|commandline|datadir|health|ownersfile|privatefile|serversettings|stopsignals)\.h'
check terminal/relay "terminal/(net|relay)/|terminal/logging\.h|$text|$meeting|$program"
check terminal/client "terminal/client/|terminal/(ownersfile|tokens)\.h|$text|$sockets"
check terminal/trading "host/|terminal/trading/|$text|terminal/(logging|clocks|databasecopy|liveprices|writetimer)\.h"

# Only net/ and what connects or makes certificates uses Asio and Beast, and the connection to NATS; no header that phones/ includes may.
boostSeenBy=$(grep -rlE '#include <boost/(asio|beast)' terminal --include='*.h' --include='*.cpp' |
  grep -vE '^terminal/(net|client)/|^terminal/(certificate|securestream|serversettings|tls|tlslayer|relay/serverconnection)\.' || true)
if [ -n "$boostSeenBy" ]; then
  echo "Asio or Beast is seen by: $boostSeenBy"
  failed=1
fi
natsSeenBy=$(grep -rlE '#include <nats' terminal | tr '\n' ' ')
if [ "$natsSeenBy" != "terminal/relay/serverconnection.h " ]; then
  echo "only terminal/relay/serverconnection.h may include NATS' headers, but these do: $natsSeenBy"
  failed=1
fi
# Of net/ only the program and the link to NATS know, which runs in its loop: both ends of the transport work with any
# session.
netSeenBy=$(grep -rlE '#include "terminal/net/' terminal/relay | sort | tr '\n' ' ')
if [ "$netSeenBy" != "terminal/relay/natslink.h terminal/relay/relaymain.cpp terminal/relay/serverconnection.h " ]; then
  echo "of terminal/relay only the link and relaymain.cpp may include terminal/net/, but these do: $netSeenBy"
  failed=1
fi

tasksSeenBy=$(grep -rlE '#include "tasks/' pocketagent decoding serialise | sort | tr '\n' ' ')
if [ "$tasksSeenBy" != "pocketagent/mobileworker.cpp " ]; then
  echo "only pocketagent/mobileworker.cpp may include tasks/, but these do: $tasksSeenBy"
  failed=1
fi
rapidjsonSeenBy=$(grep -rlE '#include <rapidjson/' host vocabulary pocketagent decoding serialise tasks | tr '\n' ' ')
if [ "$rapidjsonSeenBy" != "pocketagent/json.h " ]; then
  echo "only pocketagent/json.h may include rapidjson, but these do: $rapidjsonSeenBy"
  failed=1
fi
exit $failed
