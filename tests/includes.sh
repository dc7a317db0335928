#!/usr/bin/env bash
# Usage: includes.sh ROOT. Includes run downhill: each folder sees those it is allowed, and only one header rapidjson.
set -euo pipefail
cd "$1"
failed=0

# check FOLDER ALLOWED: no file of the folder includes one of ours that does not match ALLOWED.
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

tasksSeenBy=$(grep -rlE '#include "tasks/' pocketagent decoding serialise | sort | tr '\n' ' ')
if [ "$tasksSeenBy" != "pocketagent/mobileworker.cpp pocketagent/pocketagent.cpp " ]; then
  echo "tasks/ is seen by: $tasksSeenBy"
  failed=1
fi
rapidjsonSeenBy=$(grep -rlE '#include <rapidjson/' host vocabulary pocketagent decoding serialise tasks | tr '\n' ' ')
if [ "$rapidjsonSeenBy" != "pocketagent/json.h " ]; then
  echo "rapidjson is seen by: $rapidjsonSeenBy"
  failed=1
fi
exit $failed
