// The FM handlers: one routine runs every FM row (title, menu, the value patched into
// the pooled frame, the exchange as the FM module, the answer's render); each FUNC_
// names its row.
#include "fm_handlers.h"

#include <cstdio>

#include "context.h"
#include "exchange.h"
#include "fm_render.h"
#include "prompt.h"
#include "report.h"
#include "text.h"

BYTE data2 = 0x2E;  // 8750: 87.50 MHz
BYTE data3 = 0x22;

namespace {

// Frame positions the module reads its value from.
constexpr int VALUE_AT = 2;
constexpr int HIGH_AT = 3;
constexpr int COMMAND_AT = 1;

int runFm(const fm::Row& row, int cmdIndex, char* funName) {
    const core::HandlerContext ctx = core::handlerContext();
    MCU_CONTENT* link = ctx.systemLink;
    core::printText(fm::renderIntro(row));
    int value = 0;
    if (row.menu && !checkSelect(ctx.input, &value, row.menu->min, row.menu->max)) return 0;

    // The value goes into the frame held in the pool, so it stays for the rest of the
    // run; the table keeps the row as written.
    cmd* entry = link ? getCommandByIndex(link, cmdIndex) : nullptr;
    uint16_t frequency = 0;
    if (entry && row.menu && row.menu->frequency) {
        frequency = static_cast<uint16_t>(value);
        data2 = fm::frequencyLow(frequency);
        data3 = fm::frequencyHigh(frequency);
        entry->cmd_data[VALUE_AT] = data2;
        entry->cmd_data[HIGH_AT] = data3;
    } else if (entry && row.menu) {
        entry->cmd_data[VALUE_AT] = value;
    } else if (entry &&
               (row.reading == fm::Reading::SeekUp || row.reading == fm::Reading::SeekDown)) {
        entry->cmd_data[VALUE_AT] = data2;
        entry->cmd_data[HIGH_AT] = data3;
    }

    core::Answer answer = core::exchange(link, MCU_TYPE_FM, core::apModeOf(MCU_TYPE_FM), cmdIndex);
    if (!answer.ok()) return answer.result;  // the front end reports it
    BYTE command = static_cast<BYTE>(entry ? entry->cmd_data[COMMAND_AT] : 0);
    core::warnShortAnswer(answer, static_cast<int>(fm::bytesNeeded(row)), funName);
    fm::Outcome o = fm::renderAnswer(row, answer.view(), {command, frequency}, link->fd, funName);
    core::printText(o.out);
    if (o.frequency) {
        data2 = fm::frequencyLow(*o.frequency);
        data3 = fm::frequencyHigh(*o.frequency);
    }
    return o.result;
}

}  // namespace

int FUNC_FM_POWER_ON_OFF(int cmdIndex, char* funName) {
    return runFm(fm::POWER_ROW, cmdIndex, funName);
}

// The break row is never sent.
int FUNC_GET_BREAK(int cmdIndex, char* funName) {
    return 0;
}

int FUNC_FM_CONFIG(int cmdIndex, char* funName) {
    return runFm(fm::CONFIG_ROW, cmdIndex, funName);
}

int FUNC_FM_SET_VOLUME(int cmdIndex, char* funName) {
    return runFm(fm::VOLUME_ROW, cmdIndex, funName);
}

int FUNC_FM_SET_MUTE(int cmdIndex, char* funName) {
    return runFm(fm::MUTE_ROW, cmdIndex, funName);
}

int FUNC_FM_SET_FREQ(int cmdIndex, char* funName) {
    return runFm(fm::FREQUENCY_ROW, cmdIndex, funName);
}

int FUNC_FM_AUTO_SCAN(int cmdIndex, char* funName) {
    return runFm(fm::AUTO_SCAN_ROW, cmdIndex, funName);
}

int FUNC_FM_RDS_STATUS(int cmdIndex, char* funName) {
    return runFm(fm::RDS_STATUS_ROW, cmdIndex, funName);
}

int FUNC_FM_GET_PID(int cmdIndex, char* funName) {
    return runFm(fm::PID_ROW, cmdIndex, funName);
}

int FUNC_FM_GET_PS(int cmdIndex, char* funName) {
    return runFm(fm::PS_ROW, cmdIndex, funName);
}

int FUNC_FM_GET_RDS(int cmdIndex, char* funName) {
    return runFm(fm::RDS_ROW, cmdIndex, funName);
}

int FUNC_FM_SEEK_UP(int cmdIndex, char* funName) {
    return runFm(fm::SEEK_UP_ROW, cmdIndex, funName);
}

int FUNC_FM_SEEK_DOWN(int cmdIndex, char* funName) {
    return runFm(fm::SEEK_DOWN_ROW, cmdIndex, funName);
}

int FUNC_FM_AUDIO_SWITCH(int cmdIndex, char* funName) {
    return runFm(fm::AUDIO_ROW, cmdIndex, funName);
}

int FUNC_FM_GET_VOICE(int cmdIndex, char* funName) {
    return runFm(fm::VOICE_ROW, cmdIndex, funName);
}

int FUNC_FM_GET_FM_ZONE(int cmdIndex, char* funName) {
    return runFm(fm::ZONE_ROW, cmdIndex, funName);
}

int FUNC_FM_SET_FLASH(int cmdIndex, char* funName) {
    return runFm(fm::FLASH_ROW, cmdIndex, funName);
}

int FUNC_FM_LOAD_DEFAULT(int cmdIndex, char* funName) {
    return runFm(fm::LOAD_DEFAULT_ROW, cmdIndex, funName);
}

namespace {

// An FM row's render in the shape the row checks take (the request's command byte fixed).
template <const fm::Row& R, BYTE COMMAND>
std::string renderOf(std::span<const BYTE> answer, int fd, const char* product) {
    return fm::renderAnswer(R, answer, {COMMAND, 8750}, fd, "FM").out;
}

// clang-format off
const shapes::RenderRef RENDERS[] = {
    {FUNC_FM_POWER_ON_OFF, renderOf<fm::POWER_ROW, 0x80>},
    {FUNC_FM_CONFIG, renderOf<fm::CONFIG_ROW, 0x82>},
    {FUNC_FM_SET_VOLUME, renderOf<fm::VOLUME_ROW, 0x84>},
    {FUNC_FM_SET_MUTE, renderOf<fm::MUTE_ROW, 0x86>},
    {FUNC_FM_SET_FREQ, renderOf<fm::FREQUENCY_ROW, 0x88>},
    {FUNC_FM_AUTO_SCAN, renderOf<fm::AUTO_SCAN_ROW, 0x8A>},
    {FUNC_FM_RDS_STATUS, renderOf<fm::RDS_STATUS_ROW, 0x8C>},
    {FUNC_FM_GET_PID, renderOf<fm::PID_ROW, 0x8E>},
    {FUNC_FM_GET_PS, renderOf<fm::PS_ROW, 0x90>},
    {FUNC_FM_GET_RDS, renderOf<fm::RDS_ROW, 0x92>},
    {FUNC_FM_SEEK_UP, renderOf<fm::SEEK_UP_ROW, 0x94>},
    {FUNC_FM_SEEK_DOWN, renderOf<fm::SEEK_DOWN_ROW, 0x96>},
    {FUNC_FM_AUDIO_SWITCH, renderOf<fm::AUDIO_ROW, 0x98>},
    {FUNC_FM_GET_VOICE, renderOf<fm::VOICE_ROW, 0x9A>},
    {FUNC_FM_GET_FM_ZONE, renderOf<fm::ZONE_ROW, 0x9C>},
    {FUNC_FM_SET_FLASH, renderOf<fm::FLASH_ROW, 0x00>},
    {FUNC_FM_LOAD_DEFAULT, renderOf<fm::LOAD_DEFAULT_ROW, 0x00>},
};
// clang-format on

}  // namespace

const std::span<const shapes::RenderRef> fm::renders = RENDERS;
