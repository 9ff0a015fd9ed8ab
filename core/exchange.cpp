// The request/answer exchange over one link.
#include "exchange.h"

#include <unistd.h>

namespace core {

int apModeOf(int mcuType) {
    return mcuType == MCU_TYPE_NXP ? NXP_MODE_AP : ST_MODE_AP;
}

Answer exchange(MCU_CONTENT* link, int mcuType, int mode, int cmdIndex,
                std::span<const BYTE> request) {
    Answer answer;
    if (link == nullptr) {
        answer.result = MCU_RESULT_OPEN_FAIL;
        return answer;
    }
    answer.result =
        sendCMDAs(link, mcuType, mode, cmdIndex, request.data(), static_cast<int>(request.size()),
                  answer.bytes.data(), &answer.length);
    return answer;
}

Answer exchangeRetrying(MCU_CONTENT* link, int mcuType, int mode, int cmdIndex,
                        std::span<const BYTE> request, int tries) {
    Answer answer;
    for (int attempt = 0; attempt < tries; ++attempt) {
        answer = exchange(link, mcuType, mode, cmdIndex, request);
        if (answer.ok()) break;
        usleep(1000);
    }
    return answer;
}

}  // namespace core
