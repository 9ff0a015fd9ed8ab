// The IoT tracker settings (device 8): text fields sent and read as a length byte and
// the text, coded times and thresholds, and SMS settings. The handlers, and the pure
// renders and request builders for tests.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "mcu_base.h"
#include "shapes/rows.h"

int FUNC_ST_IOT_GET_APN(int cmdIndex, char* funName);
int FUNC_ST_IOT_GET_DNS(int cmdIndex, char* funName);
int FUNC_ST_IOT_GET_SERVER_IP(int cmdIndex, char* funName);
int FUNC_ST_IOT_GET_SERVER_PORT(int cmdIndex, char* funName);
int FUNC_ST_IOT_GET_IMEI(int cmdIndex, char* funName);
int FUNC_ST_IOT_GET_MACHINE_NAME(int cmdIndex, char* funName);
int FUNC_ST_IOT_GET_PASSWORD(int cmdIndex, char* funName);
int FUNC_ST_IOT_GET_PHONE_NUMBER(int cmdIndex, char* funName);
int FUNC_ST_IOT_GET_TRACKER_STATUS(int cmdIndex, char* funName);
int FUNC_ST_IOT_GET_TRACKER_MODE(int cmdIndex, char* funName);
int FUNC_ST_IOT_GET_TRACKER_DELAY_TIME(int cmdIndex, char* funName);
int FUNC_ST_IOT_GET_TRACKER_RESPONSE_TIME(int cmdIndex, char* funName);
int FUNC_ST_IOT_GET_TRACKER_THRESHTAP(int cmdIndex, char* funName);
int FUNC_ST_IOT_GET_TRACKER_ANGLE(int cmdIndex, char* funName);
int FUNC_ST_IOT_GET_SMS_STATUS(int cmdIndex, char* funName);
int FUNC_ST_IOT_GET_SMS_CODING_TYPE(int cmdIndex, char* funName);
int FUNC_ST_IOT_GET_SMS_CONTENT(int cmdIndex, char* funName);
int FUNC_ST_IOT_GET_SMS_RESPONSE_TIME(int cmdIndex, char* funName);

int FUNC_ST_IOT_SET_APN(int cmdIndex, char* funName);
int FUNC_ST_IOT_SET_DNS(int cmdIndex, char* funName);
int FUNC_ST_IOT_SET_SERVER_IP(int cmdIndex, char* funName);
int FUNC_ST_IOT_SET_SERVER_PORT(int cmdIndex, char* funName);
int FUNC_ST_IOT_SET_MACHINE_NAME(int cmdIndex, char* funName);
int FUNC_ST_IOT_SET_PASSWORD(int cmdIndex, char* funName);
int FUNC_ST_IOT_SET_PHONE_NUMBER(int cmdIndex, char* funName);
int FUNC_ST_IOT_SET_TRACKER_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_IOT_SET_TRACKER_MODE(int cmdIndex, char* funName);
int FUNC_ST_IOT_SET_TRACKER_DELAY_TIME(int cmdIndex, char* funName);
int FUNC_ST_IOT_SET_TRACKER_RESPONSE_TIME(int cmdIndex, char* funName);
int FUNC_ST_IOT_SET_TRACKER_THRESHTAP(int cmdIndex, char* funName);
int FUNC_ST_IOT_SET_TRACKER_ANGLE(int cmdIndex, char* funName);
int FUNC_ST_IOT_SET_SMS_CONTROL(int cmdIndex, char* funName);
int FUNC_ST_IOT_SET_SMS_CODING_TYPE(int cmdIndex, char* funName);
int FUNC_ST_IOT_SET_SMS_CONTENT(int cmdIndex, char* funName);
int FUNC_ST_IOT_SET_SMS_RESPONSE_TIME(int cmdIndex, char* funName);

namespace iot {

using Bytes = std::span<const BYTE>;

// The most a text field read back may hold: longer lengths are refused.
constexpr size_t IOT_STRING_MAX = 64;
constexpr size_t SMS_TEXT_MAX = 128;

// The text of a length-prefixed answer: false when the length byte exceeds `capacity`;
// a length beyond the answer takes what came. The text ends at its first NUL, as printed.
bool iotString(Bytes a, size_t capacity, std::string* text);

// The first whitespace-delimited word of `line`, cut to `width` characters (how "%Ns"
// reads); false when the line holds no word.
bool firstWord(std::string_view line, size_t width, std::string* word);
// The request of a text field: the length byte, then the text.
std::vector<BYTE> iotRequest(std::string_view text);

// Wire values of the coded menus.
extern const int TRACKER_DELAY_SECONDS[6];
extern const int TRACKER_RESPONSE_SECONDS[6];
extern const BYTE THRESHTAP_CODES[4];
extern const BYTE ANGLE_CODES[4];

std::string renderText(const char* line, size_t capacity, Bytes a, int fd);
std::string renderPhoneNumber(Bytes a, std::string_view product, int fd);
std::string renderServerPort(Bytes a, std::string_view product, int fd);
std::string renderTrackerDelay(Bytes a, std::string_view product, int fd);
std::string renderTrackerResponse(Bytes a, std::string_view product, int fd);
std::string renderThreshtap(Bytes a, std::string_view product, int fd);
std::string renderAngle(Bytes a, std::string_view product, int fd);
std::string renderSmsContent(Bytes a, std::string_view product, int fd);
std::string renderSmsResponseTime(Bytes a, std::string_view product, int fd);

// Every handler that runs a data row of state texts, with its row.
extern const std::span<const shapes::GetRef> getRows;
// Every handler that runs a menu row, with its row.
extern const std::span<const shapes::MenuRef> menuRows;

}  // namespace iot
