#!/usr/bin/env bash
# The guided tour behind `./run demo`: start qvk-emulator on a free loopback
# port with its sample Help Center, walk through the main job with the qvk
# command-line client, and stop the emulator again (also on an error or Ctrl-C).
set -euo pipefail
build="${1:?usage: scripts/demo.sh BUILD_DIR}"
emulator="$build/emulator/qvk-emulator"
qvk_binary="$build/tools/qvk/qvk"

for program in "$emulator" "$qvk_binary"; do
  [ -x "$program" ] || { echo "error: $program was not built (run ./run build)" >&2; exit 1; }
done

workdir="$(mktemp -d)"
emulator_pid=""
drain_pid=""
cleanup() {
  if [ -n "$emulator_pid" ]; then
    kill -TERM "$emulator_pid" 2>/dev/null || true
    wait "$emulator_pid" 2>/dev/null || true
  fi
  if [ -n "$drain_pid" ]; then wait "$drain_pid" 2>/dev/null || true; fi
  rm -rf "$workdir"
}
trap cleanup EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# The emulator prints its base URL as the first line of its output. The FIFO
# stays open on descriptor 3 and is drained after that line, so that the
# emulator never blocks on (or dies writing to) a full or closed pipe.
mkfifo "$workdir/emulator.out"
"$emulator" --port 0 --quiet >"$workdir/emulator.out" &
emulator_pid=$!
exec 3<"$workdir/emulator.out"
read -r -t 20 -u 3 url || { echo "error: qvk-emulator did not start" >&2; exit 1; }
cat <&3 >/dev/null &
drain_pid=$!
exec 3<&-

# qvk reads its defaults from the environment, as a user would set them once.
export QVK_URL="$url"
export QVK_DATA_DIR="$workdir/qvk-data"
unset QVK_APP_ID QVK_CLIENT_ID

bold="" plain=""
if [ -t 1 ]; then bold=$'\e[1m' plain=$'\e[0m'; fi

# step HEADING DISPLAYED-COMMAND QVK-ARGUMENTS...
step() {
  local heading="$1" shown="$2"
  shift 2
  echo
  echo "${bold}${heading}${plain}"
  echo "\$ qvk ${shown}"
  "$qvk_binary" "$@"
}

cat <<INTRO
${bold}Velmaro tour${plain}
qvk-emulator is serving a sample Help Center and support account at $url.
qvk, the command-line client, calls the library's providers against it:
\$ export QVK_URL=$url
INTRO

step "1. What the Help Center offers: its categories." \
  "hc categories" hc categories
step "2. The sections of the Account & Billing category." \
  "hc sections 360000010002" hc sections 360000010002
step "3. The articles of one section, with author, date and votes." \
  "hc articles 360000020003" hc articles 360000020003
step "4. A full-text search, as a user typing into the search box." \
  'hc search "invoice"' hc search "invoice"
step "5. Suggestions while the user writes a support request." \
  'hc suggest "my payment was declined"' hc suggest "my payment was declined"
step "6. One article, as the reader sees it (the view is recorded for statistics)." \
  "hc article 360000030017" hc article 360000030017
step "7. The files offered below that article." \
  "hc attachments 360000030017" hc attachments 360000030017
step "8. The reader found it helpful: an up-vote." \
  "hc upvote 360000030017" hc upvote 360000030017
step "9. The service's settings for this app, which switch features on and off." \
  "settings" settings
step "10. The Help Center's own settings: locale and article voting." \
  "settings help-center" settings help-center
step "11. Every command also speaks JSON for scripts." \
  "--json hc category 360000010002" --json hc category 360000010002

# The sample data's signed-in user (emulator/README.md): the requests side
# acts for this user from here on.
identity="$(curl -sf "$url/_emulator/demo_identity")" ||
  { echo "error: the emulator did not give the demo identity" >&2; exit 1; }
demo_jwt="$(sed -n 's/.*"jwt":"\([^"]*\)".*/\1/p' <<<"$identity")"
user=(--jwt "$demo_jwt")

cat <<REQUESTS

${bold}Support requests${plain}
From here on qvk acts for the sample account's signed-in user, Demo User
(--jwt TOKEN; the token is printed by \`qvk-emulator --help\`).
REQUESTS

step "12. The form a user fills in to contact support, with its fields." \
  "forms 360000040001" "${user[@]}" forms 360000040001
echo
echo "${bold}13. A new request with the form, a custom field (the order number) and a tag.${plain}"
echo "\$ qvk requests create --form 360000040001 --subject \"Sync stops after the update\" \\"
echo "    --description \"Since 4.3 my projects no longer sync.\" --field 360000050005=A-1042 --tag ios"
request_id="$("$qvk_binary" "${user[@]}" requests create --form 360000040001 \
  --subject "Sync stops after the update" --description "Since 4.3 my projects no longer sync." \
  --field 360000050005=A-1042 --tag ios)"
echo "$request_id"
step "14. The user's requests, newest activity first; * marks unread comments." \
  "requests list" "${user[@]}" requests list

echo
echo "${bold}15. Meanwhile an agent answers (the emulator's scenario control stands in for the agent).${plain}"
echo "\$ curl -X POST $url/_emulator/requests/$request_id/comments -d '{\"body\": ...}'"
curl -sf -X POST "$url/_emulator/requests/$request_id/comments" \
  -d '{"body":"Thanks for the order number. Please sign out and in again: that restarts the sync."}' \
  >/dev/null || { echo "error: the emulator did not take the agent's reply" >&2; exit 1; }
echo "(reply added)"
step "16. The app refreshes the list: the new request now has an unread comment." \
  "requests list" "${user[@]}" requests list
step "17. Unread comments per request, from the counters kept on the device." \
  "requests updates" "${user[@]}" requests updates
step "18. The user opens the request and reads the conversation." \
  "requests comments $request_id" "${user[@]}" requests comments "$request_id"
step "19. Reading both comments marks them read on the device." \
  "requests mark-read $request_id 2" "${user[@]}" requests mark-read "$request_id" 2
step "20. The user replies." \
  "requests comment $request_id \"Signing in again fixed it, thank you!\"" \
  "${user[@]}" requests comment "$request_id" "Signing in again fixed it, thank you!"
step "21. Nothing unread is left on the new request." \
  "requests updates" "${user[@]}" requests updates

# Nothing listens on the discard port of loopback: a service out of reach.
offline_url="http://127.0.0.1:9"
step "22. Later, without a network, the user adds a detail: the reply is kept in the outbox." \
  "--url $offline_url requests comment $request_id \"It stopped again on the train.\" --queue-offline" \
  --url "$offline_url" "${user[@]}" requests comment "$request_id" \
  "It stopped again on the train." --queue-offline
step "23. What waits in the outbox." "requests outbox" "${user[@]}" requests outbox
step "24. Back online, the outbox is sent, in order and once." \
  "requests outbox --send" "${user[@]}" requests outbox --send

echo
echo "That was the tour. The client is $qvk_binary:"
echo "\`qvk --help\` lists every command, and \`qvk shell\` runs several in one session."
