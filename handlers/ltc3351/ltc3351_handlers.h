// The supercapacitor charger commands (device 2, the module fitted on KX61): the
// handlers, and the pure renders of their answers for tests.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "mcu_base.h"

int FUNC_LTC3351_GET_INPUT_VOLTAGE(int cmdIndex, char* funName);
int FUNC_LTC3351_GET_CAPACITOR_STACK_VOLTAGE(int cmdIndex, char* funName);
int FUNC_LTC3351_GET_OUTPUT_VOLTAGE(int cmdIndex, char* funName);
int FUNC_LTC3351_GET_TEMPERATURE(int cmdIndex, char* funName);
int FUNC_LTC3351_GET_CHARGE_CURRENT(int cmdIndex, char* funName);
int FUNC_LTC3351_GET_INPUT_CURRENT(int cmdIndex, char* funName);
int FUNC_LTC3351_GET_CAPACITOR_STACK_CAPACITANCE_VALUE(int cmdIndex, char* funName);
int FUNC_LTC3351_GET_VCAP1(int cmdIndex, char* funName);
int FUNC_LTC3351_GET_VCAP2(int cmdIndex, char* funName);
int FUNC_LTC3351_GET_VCAP3(int cmdIndex, char* funName);
int FUNC_LTC3351_GET_VCAP4(int cmdIndex, char* funName);
int FUNC_LTC3351_GET_VCAP_NUM(int cmdIndex, char* funName);
int FUNC_LTC3351_GET_ADV_VOUT(int cmdIndex, char* funName);
int FUNC_LTC3351_GET_SCAP_TEMPSEN(int cmdIndex, char* funName);
int FUNC_LTC3351_GET_ADC_VCAP(int cmdIndex, char* funName);
int FUNC_LTC3351_GET_SLAVE_STATUS(int cmdIndex, char* funName);
int FUNC_LTC3351_GET_VOLT_TYPE(int cmdIndex, char* funName);
int FUNC_LTC3351_GET_CAP_STATUS(int cmdIndex, char* funName);
int FUNC_LTC3351_GET_VOLT_PERCENT(int cmdIndex, char* funName);
int FUNC_LTC3351_GET_CAP_HEALTH(int cmdIndex, char* funName);
int FUNC_LTC3351_GET_CAP_LED(int cmdIndex, char* funName);
int FUNC_LTC3351_SET_VOLT_TYPE(int cmdIndex, char* funName);
int FUNC_LTC3351_SET_CAP_LED(int cmdIndex, char* funName);

namespace ltc3351 {

using Bytes = std::span<const BYTE>;

// The five-character reading of one of the measurement addresses 0x01..0x0B.
std::string renderTextValue(int address, Bytes a, std::string_view product, int fd);
std::string renderCapacitorCount(Bytes a, std::string_view product, int fd);
std::string renderStandbyVoltage(Bytes a, std::string_view product, int fd);
std::string renderSystemTemperature(Bytes a, std::string_view product, int fd);
std::string renderCapacitorVoltage(Bytes a, std::string_view product, int fd);
std::string renderConnections(Bytes a, std::string_view product, int fd);
std::string renderVoltType(Bytes a, std::string_view product, int fd);
std::string renderChargeState(Bytes a, std::string_view product, int fd);
std::string renderChargeLevel(Bytes a, std::string_view product, int fd);
std::string renderHealth(Bytes a, std::string_view product, int fd);
std::string renderLed(Bytes a, std::string_view product, int fd);
std::string renderVoltTypeMenu();
std::string renderLedMenu();

}  // namespace ltc3351
