#!/usr/bin/env bash
# Rules that no compiler checks: names of Qt that came after 5.12, system headers outside of the
# platform siblings, platform switches inside of shared files.
set -eu
cd "$(dirname "$0")/.."

mapfile -t all < <(find src fleet -name '*.cpp' -o -name '*.h' | sort)
mapfile -t shared < <(printf '%s\n' "${all[@]}" | grep -vE '_(win|posix|d3d9|gl)\.cpp$')
[ ${#shared[@]} -gt 0 ] # an empty list would pass unseen

failed=
forbid() { # REASON PATTERN FILE...
    local reason=$1 pattern=$2
    shift 2
    if grep -nHE "$pattern" "$@"; then
        echo "check-sources: $reason" >&2
        failed=1
    fi
}

newer='Qt::(SkipEmptyParts|KeepEmptyParts|endl|flush|hex|dec|bin|oct|fixed|scientific)\b'
newer+='|\b(QRecursiveMutex|errorOccurred|setTransferTimeout|setAutoDeleteReplies|startOfDay)\b'
newer+='|\b(setHighDpiScaleFactorRoundingPolicy|checkStateChanged|ReturnByValue|textActivated)\b'
newer+='|\b(idClicked|idToggled|QRandomGenerator64|qEnvironmentVariableIntValue64|isFeatureEnabled)\b'
forbid 'a Qt call newer than 5.12' "$newer" "${all[@]}"

forbid 'a system header outside of a platform sibling' \
    '#include <(winsock2?|ws2tcpip|windows|sys/socket|netinet/[a-z]+|arpa/inet|unistd|d3d9)\.h>' \
    "${shared[@]}"
forbid 'a platform switch inside of a shared file' '#\s*if.*(_WIN32|Q_OS_|__linux__)' "${shared[@]}"

[ -z "$failed" ]
