// The supercapacitor charger commands. Most readings print only on KX61, the product
// that carries the module; on others the exchange is still made and reported.
#include "ltc3351_handlers.h"

#include "shapes/exchange_steps.h"

using namespace steps;

namespace ltc3351 {

namespace {

constexpr const char* SEP46 = "==============================================";

bool fitted(std::string_view product) {
    return isModel(product, {"KX61"});
}

// The line of each measurement address 0x01..0x0B.
constexpr const char* TEXT_LINES[] = {
    "fd(%d) LTC3351 Input Voltage = %c%c%c%c%c\n",
    "fd(%d) LTC3351 Capacitor stack voltage = %c%c%c%c%c\n",
    "fd(%d) LTC3351 Output voltage = %c%c%c%c%c\n",
    "fd(%d) LTC3351 Temperature = %c%c%c%c%c\n",
    "fd(%d) LTC3351 Charge current = %c%c%c%c%c\n",
    "fd(%d) LTC3351 Input current = %c%c%c%c%c\n",
    "fd(%d) LTC3351 CAP stack CAP value = %c%c%c%c%c\n",
    "fd(%d) LTC3351 CAP1 value = %c%c%c%c%c\n",
    "fd(%d) LTC3351 CAP2 value = %c%c%c%c%c\n",
    "fd(%d) LTC3351 CAP3 value = %c%c%c%c%c\n",
    "fd(%d) LTC3351 CAP4 value = %c%c%c%c%c\n",
};

constexpr Named VOLT_TYPES[] = {
    {0, "fd(%d) LTC3351 Volt type = 2.9V (default) \n"},
    {1, "fd(%d) LTC3351 Volt type = 2.7V \n"},
    {2, "fd(%d) LTC3351 Volt type = 2.5V \n"},
    {3, "fd(%d) LTC3351 Volt type = 2.4V \n"},
};
constexpr Named CHARGE_STATES[] = {
    {0, "fd(%d) LTC3351 Capacitors status = NO_BATTERY \n"},
    {1, "fd(%d) LTC3351 Capacitors status = CHG_FINISH \n"},
    {2, "fd(%d) LTC3351 Capacitors status = CHG_NOW \n"},
    {3, "fd(%d) LTC3351 Capacitors status = DISCHG_NOW \n"},
    {4, "fd(%d) LTC3351 Capacitors status = STOP \n"},
};
// Each holds one literal percent sign, written "%%" for the formatter.
constexpr Named CHARGE_LEVELS[] = {
    {0, "fd(%d) LTC3351 Volt percent = 0%% (<6.1V) \n"},
    {1, "fd(%d) LTC3351 Volt percent = 20%% (<7.5V & >= 6.1V) \n"},
    {2, "fd(%d) LTC3351 Volt percent = 40%% (<9.0V & >= 7.5V) \n"},
    {3, "fd(%d) LTC3351 Volt percent = 60%% (<10.5V & >= 9V) \n"},
    {4, "fd(%d) LTC3351 Volt percent = 80%% (<11.54V & >= 10.5V) \n"},
    {5, "fd(%d) LTC3351 Volt percent = 100%% (>= 11.54V) \n"},
};
constexpr Named HEALTH[] = {
    {0, "fd(%d) LTC3351 Capacitors health = GOOD \n"},
    {1, "fd(%d) LTC3351 Capacitors health = BAD \n"},
};
constexpr Named LED[] = {
    {0, "fd(%d) LTC3351 Capacitors LED turn off \n"},
    {1, "fd(%d) LTC3351 Capacitors LED turn on \n"},
};
constexpr const char* CONNECTED[] = {
    "fd(%d) Enable Master connection. \n",
    "fd(%d) Enable Slave1 connection. \n",
    "fd(%d) Enable Slave2 connection. \n",
    "fd(%d) Enable Slave3 connection. \n",
};
constexpr const char* NOT_CONNECTED[] = {
    "fd(%d) Disable Master connection. \n",
    "fd(%d) Disable Slave1 connection. \n",
    "fd(%d) Disable Slave2 connection. \n",
    "fd(%d) Disable Slave3 connection. \n",
};

constexpr const char* VOLT_OPTIONS[] = {"Set Volt type:", "0. 2.9V (Default)", "1. 2.7V ",
                                        "2. 2.5V ", "3. 2.4V "};
constexpr Menu VOLT_MENU = {"========\t\tLTC3351 Volt Type\t\t========", VOLT_OPTIONS, 0, 3};
constexpr const char* LED_OPTIONS[] = {"Set CAP LED:", "0. Turn off", "1. Turn on "};
constexpr Menu LED_MENU = {"========\t\tLTC3351 CAP LED\t\t\t========", LED_OPTIONS, 0, 1};

// A KX61 state line between 46-"=" separators; the separators alone elsewhere.
std::string stateBlock(std::span<const Named> states, Bytes a, std::string_view product, int fd) {
    return framed(fitted(product) ? named(states, byteAt(a, 0), fd) : "", SEP46);
}

int textGet(int cmdIndex, char* funName, int address) {
    Answer a = exchange(cmdIndex, {}, Report::Get, funName);
    if (a.ok()) print(renderTextValue(address, a.bytes, productName(), fd()));
    return a.verdict;
}

}  // namespace

std::string renderTextValue(int address, Bytes a, std::string_view product, int fd) {
    // The MCU formats these readings itself: exactly five characters, else nothing.
    if (!fitted(product) || a.size() != 5 || address < 1 || address > 11) return {};
    return framed(format(TEXT_LINES[address - 1], fd, a[0], a[1], a[2], a[3], a[4]));
}

std::string renderCapacitorCount(Bytes a, std::string_view product, int fd) {
    if (!fitted(product)) return {};
    return framed(format("fd(%d) LTC3351 The number of capacitors = %d\n", fd, byteAt(a, 0)));
}

// The two output voltages print only their opening separator.
std::string renderStandbyVoltage(Bytes a, std::string_view, int fd) {
    return std::string(SEPARATOR) + '\n' +
           format("fd(%d) LTC3351 24VSB output Voltage = %d (0~650)(unit:100mV)\n", fd,
                  wordAt(a, 0));
}

std::string renderCapacitorVoltage(Bytes a, std::string_view, int fd) {
    return std::string(SEPARATOR) + '\n' +
           format("fd(%d) LTC3351 Capacitors output Voltage = %d (0~650)(unit:100mV)\n", fd,
                  wordAt(a, 0));
}

std::string renderSystemTemperature(Bytes a, std::string_view, int fd) {
    BYTE t = byteAt(a, 0);
    // 215 is the MCU's mark for a missing module, not -41 degrees.
    if (t == 215) return framed(format("fd(%d) Without Battery\n", fd));
    if (t & 0x80)
        return framed(format("fd(%d) LTC3351 System Temperature = -%d (-27 ~ 125)\n", fd, 256 - t));
    return framed(format("fd(%d) LTC3351 System Temperature = %d (-27 ~ 125)\n", fd, t));
}

std::string renderConnections(Bytes a, std::string_view product, int fd) {
    if (!fitted(product)) return {};
    std::string s;
    for (int bit = 0; bit < 4; ++bit)
        s += format((byteAt(a, 0) >> bit & 1) ? CONNECTED[bit] : NOT_CONNECTED[bit], fd);
    return framed(s);
}

std::string renderVoltType(Bytes a, std::string_view product, int fd) {
    return stateBlock(VOLT_TYPES, a, product, fd);
}
std::string renderChargeState(Bytes a, std::string_view product, int fd) {
    return stateBlock(CHARGE_STATES, a, product, fd);
}
std::string renderChargeLevel(Bytes a, std::string_view product, int fd) {
    return stateBlock(CHARGE_LEVELS, a, product, fd);
}
std::string renderHealth(Bytes a, std::string_view product, int fd) {
    return stateBlock(HEALTH, a, product, fd);
}
std::string renderLed(Bytes a, std::string_view product, int fd) {
    return stateBlock(LED, a, product, fd);
}

std::string renderVoltTypeMenu() {
    return renderMenu(VOLT_MENU);
}
std::string renderLedMenu() {
    return renderMenu(LED_MENU);
}

}  // namespace ltc3351

using namespace ltc3351;

int FUNC_LTC3351_GET_INPUT_VOLTAGE(int cmdIndex, char* funName) {
    return textGet(cmdIndex, funName, 0x01);
}
int FUNC_LTC3351_GET_CAPACITOR_STACK_VOLTAGE(int cmdIndex, char* funName) {
    return textGet(cmdIndex, funName, 0x02);
}
int FUNC_LTC3351_GET_OUTPUT_VOLTAGE(int cmdIndex, char* funName) {
    return textGet(cmdIndex, funName, 0x03);
}
int FUNC_LTC3351_GET_TEMPERATURE(int cmdIndex, char* funName) {
    return textGet(cmdIndex, funName, 0x04);
}
int FUNC_LTC3351_GET_CHARGE_CURRENT(int cmdIndex, char* funName) {
    return textGet(cmdIndex, funName, 0x05);
}
int FUNC_LTC3351_GET_INPUT_CURRENT(int cmdIndex, char* funName) {
    return textGet(cmdIndex, funName, 0x06);
}
int FUNC_LTC3351_GET_CAPACITOR_STACK_CAPACITANCE_VALUE(int cmdIndex, char* funName) {
    return textGet(cmdIndex, funName, 0x07);
}
int FUNC_LTC3351_GET_VCAP1(int cmdIndex, char* funName) {
    return textGet(cmdIndex, funName, 0x08);
}
int FUNC_LTC3351_GET_VCAP2(int cmdIndex, char* funName) {
    return textGet(cmdIndex, funName, 0x09);
}
int FUNC_LTC3351_GET_VCAP3(int cmdIndex, char* funName) {
    return textGet(cmdIndex, funName, 0x0A);
}
int FUNC_LTC3351_GET_VCAP4(int cmdIndex, char* funName) {
    return textGet(cmdIndex, funName, 0x0B);
}
int FUNC_LTC3351_GET_VCAP_NUM(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, fitted(productName()) ? 1 : 0, renderCapacitorCount);
}
int FUNC_LTC3351_GET_ADV_VOUT(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 2, renderStandbyVoltage);
}
int FUNC_LTC3351_GET_SCAP_TEMPSEN(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 1, renderSystemTemperature);
}
int FUNC_LTC3351_GET_ADC_VCAP(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 2, renderCapacitorVoltage);
}
int FUNC_LTC3351_GET_SLAVE_STATUS(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, fitted(productName()) ? 1 : 0, renderConnections);
}
int FUNC_LTC3351_GET_VOLT_TYPE(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, fitted(productName()) ? 1 : 0, renderVoltType);
}
int FUNC_LTC3351_GET_CAP_STATUS(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, fitted(productName()) ? 1 : 0, renderChargeState);
}
int FUNC_LTC3351_GET_VOLT_PERCENT(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, fitted(productName()) ? 1 : 0, renderChargeLevel);
}
int FUNC_LTC3351_GET_CAP_HEALTH(int cmdIndex, char* funName) {
    print(format("cmdIndex = %d", cmdIndex));
    return runGet(cmdIndex, funName, {}, fitted(productName()) ? 1 : 0, renderHealth);
}
int FUNC_LTC3351_GET_CAP_LED(int cmdIndex, char* funName) {
    print(format("cmdIndex = %d", cmdIndex));
    return runGet(cmdIndex, funName, {}, fitted(productName()) ? 1 : 0, renderLed);
}
int FUNC_LTC3351_SET_VOLT_TYPE(int cmdIndex, char* funName) {
    return runChoice(cmdIndex, funName, VOLT_MENU);
}
int FUNC_LTC3351_SET_CAP_LED(int cmdIndex, char* funName) {
    return runChoice(cmdIndex, funName, LED_MENU);
}
