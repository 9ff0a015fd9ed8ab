// The IoT tracker settings. Text fields travel as a length byte and the text; they are
// read like "%Ns" (blank lines and leading blanks skipped, the first word cut to the
// field's width) and a read that finds no text sends nothing.
#include "iot_handlers.h"

#include <cstdio>

#include "shapes/exchange_steps.h"
#include "shapes/rows.h"

using namespace steps;
using shapes::GetRow;
using shapes::MenuRow;

namespace iot {

const int TRACKER_DELAY_SECONDS[6] = {60, 120, 180, 240, 420, 600};
const int TRACKER_RESPONSE_SECONDS[6] = {60, 600, 3600, 10800, 21600, 43200};
const BYTE THRESHTAP_CODES[4] = {64, 128, 192, 255};
const BYTE ANGLE_CODES[4] = {128, 165, 196, 222};

namespace {

const GetRow GET_TRACKER_STATUS = {
    .lines = {{.states = {{0, "Tracker Disable."}, {1, "Tracker Enable."}}}}};
const GetRow GET_TRACKER_MODE = {
    .lines = {{.states = {{0, "Normal Mode."}, {1, "Continue Mode."}}}}};
constexpr Named THRESHTAPS[] = {
    {64, "fd(%d) Tracker Threshtap = 4g\n"},
    {128, "fd(%d) Tracker Threshtap = 8g\n"},
    {192, "fd(%d) Tracker Threshtap = 12g\n"},
    {255, "fd(%d) Tracker Threshtap = 16g\n"},
};
constexpr Named ANGLES[] = {
    {128, "fd(%d) Tracker Angle = 30\n"},
    {165, "fd(%d) Tracker Angle = 40\n"},
    {196, "fd(%d) Tracker Angle = 50\n"},
    {222, "fd(%d) Tracker Angle = 60\n"},
};
const GetRow GET_SMS_STATUS = {.lines = {{.states = {{0, "SMS Disable."}, {1, "SMS Enable."}}}}};
const GetRow GET_SMS_CODING_TYPE = {.lines = {{.states = {{0, "ASCII."}, {1, "Unicode."}}}}};

constexpr const char* DNS_OPTIONS[] = {"0. DNS 0", "1. DNS 1"};
constexpr Menu DNS_MENU = {"========\t\tDNS Index \t\t========", DNS_OPTIONS};
constexpr Menu PHONE_INDEX_ASK = {
    "========\tPhone Number Index \t\t========", {}, 0, 9, false, "Input Phone Index (0~9):"};

const MenuRow SET_TRACKER_CONTROL = {"========\tTracker Control \t\t========",
                                     {"0. Disable", "1. Enable"}};
const MenuRow SET_TRACKER_MODE = {"========\t\tTracker Mode \t\t========",
                                  {"0. Normal Mode.", "1. Continue Mode."}};
// Option 3 reads "5 minutes" but sends 240 seconds: the tracker's table is so.
constexpr const char* DELAY_OPTIONS[] = {"0. 1 minutes.", "1. 2 minutes.", "2. 3 minutes.",
                                         "3. 5 minutes.", "4. 7 minutes.", "5. 10 minutes."};
constexpr Menu DELAY_MENU = {"========\tTracker Delay Time \t\t========", DELAY_OPTIONS, 0, 5};
constexpr const char* RESPONSE_OPTIONS[] = {"0. 1 minutes.",   "1. 10 minutes.",
                                            "2. 60 minutes.",  "3. 180 minutes.",
                                            "4. 360 minutes.", "5. 720 minutes."};
constexpr Menu RESPONSE_MENU = {"========\tTracker Response Time \t\t========", RESPONSE_OPTIONS, 0,
                                5};
constexpr const char* THRESHTAP_OPTIONS[] = {"0. 4g", "1. 8g", "2. 12g", "3. 16g"};
constexpr Menu THRESHTAP_MENU = {"========\tTracker Threshtap \t\t========", THRESHTAP_OPTIONS, 0,
                                 3};
constexpr const char* ANGLE_OPTIONS[] = {"0. 30", "1. 40", "2. 50", "3. 60"};
constexpr Menu ANGLE_MENU = {"========\t\tTracker Angle \t\t========", ANGLE_OPTIONS, 0, 3};
const MenuRow SET_SMS_CONTROL = {"========\t\tSMS Control \t\t========",
                                 {"0. Disable", "1. Enable"}};
const MenuRow SET_SMS_CODING_TYPE = {"========\tSMS Coding Type \t\t========",
                                     {"0. ASCII", "1. Unicode"}};

constexpr Menu PORT_ASK = {nullptr, {},    0,
                           65535,   false, "Input Server Port, EX: 5050 (0~65535) : "};
constexpr Menu SMS_TIME_ASK = {
    nullptr, {}, 0, 65535, false, "Input SMS Response Time, EX: 1 (0~65535)(unit:Sec) : "};

bool blank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

}  // namespace

bool iotString(Bytes a, size_t capacity, std::string* text) {
    size_t n = byteAt(a, 0);
    if (n > capacity) return false;
    size_t have = a.size() > 0 ? a.size() - 1 : 0;
    text->clear();
    for (size_t i = 0; i < n && i < have && a[i + 1] != 0; ++i)
        text->push_back(static_cast<char>(a[i + 1]));
    return true;
}

bool firstWord(std::string_view line, size_t width, std::string* word) {
    size_t at = 0;
    while (at < line.size() && blank(line[at])) ++at;
    if (at == line.size()) return false;
    size_t end = at;
    while (end < line.size() && !blank(line[end]) && end - at < width) ++end;
    word->assign(line.substr(at, end - at));
    return true;
}

std::vector<BYTE> iotRequest(std::string_view text) {
    std::vector<BYTE> r;
    r.reserve(text.size() + 1);
    r.push_back(static_cast<BYTE>(text.size()));
    for (char c : text) r.push_back(static_cast<BYTE>(c));
    return r;
}

std::string renderText(const char* line, size_t capacity, Bytes a, int fd) {
    std::string text;
    if (!iotString(a, capacity, &text)) return {};
    return format(line, fd, text.c_str());
}

std::string renderPhoneNumber(Bytes a, std::string_view, int fd) {
    // No length byte here: the number is every byte but the last.
    std::string number;
    for (size_t i = 0; i + 1 < a.size() && i < IOT_STRING_MAX && a[i] != 0; ++i)
        number.push_back(static_cast<char>(a[i]));
    return framed(format("fd(%d) Phone Number = %s \n", fd, number.c_str()));
}

std::string renderServerPort(Bytes a, std::string_view, int fd) {
    return framed(format("fd(%d) Server Port = %d (0~65535)\n", fd, wordAt(a, 0)));
}

std::string renderTrackerDelay(Bytes a, std::string_view, int fd) {
    return framed(format("fd(%d) Tracker Delay Time = %d (unit:Minute)\n", fd, wordAt(a, 0) / 60));
}

std::string renderTrackerResponse(Bytes a, std::string_view, int fd) {
    return format("fd(%d) Tracker Response Time = %d (unit:Minute)\n", fd, wordAt(a, 0) / 60);
}

std::string renderThreshtap(Bytes a, std::string_view, int fd) {
    return framed(named(THRESHTAPS, byteAt(a, 0), fd));
}

std::string renderAngle(Bytes a, std::string_view, int fd) {
    return framed(named(ANGLES, byteAt(a, 0), fd));
}

std::string renderSmsContent(Bytes a, std::string_view, int fd) {
    return renderText("fd(%d) SMS Message [ %s ] \n", SMS_TEXT_MAX, a, fd);
}

std::string renderSmsResponseTime(Bytes a, std::string_view, int fd) {
    return format("fd(%d) SMS Response Time = %d (0~65535)(unit:Sec)\n", fd, wordAt(a, 0));
}

}  // namespace iot

using namespace iot;

namespace {

constexpr const char* READ_FAILED = "Input Error !!! Please input again.\n";

// A text GET: the value line between separators, or the separators alone when the
// MCU's length byte is more than the field holds.
int textGet(int cmdIndex, char* funName, std::span<const BYTE> request, const char* line,
            size_t capacity, bool frame = true) {
    Answer a = exchange(cmdIndex, request, Report::Get, funName);
    if (!a.ok()) return a.verdict;
    size_t n = byteAt(a.bytes, 0);
    if (n > capacity) {
        fprintf(stderr, "%s: %s: text of %zu bytes refused, the field holds %zu\n", programName(),
                funName, n, capacity);
    } else {
        warnShort(funName, a, n + 1);
    }
    std::string text = renderText(line, capacity, a.bytes, fd());
    print(frame ? framed(text) : text);
    return a.verdict;
}

// Reads like "%Ns": blank lines are skipped, then the first word, cut to `width`.
bool readWord(size_t width, std::string* word) {
    std::string line;
    while (readLine(&line))
        if (firstWord(line, width, word)) return true;
    print(READ_FAILED);
    return false;
}

// Reads the rest of a line after leading blanks (blank lines skipped), cut to `width`.
bool readRest(size_t width, std::string* text) {
    std::string line;
    while (readLine(&line)) {
        size_t at = line.find_first_not_of(" \t\r\v\f");
        if (at == std::string::npos) continue;
        *text = line.substr(at, width);
        return true;
    }
    print(READ_FAILED);
    return false;
}

// A text SET: the rule, the prompt, one word of at most `width`, sent after `prefix`.
int textSet(int cmdIndex, char* funName, const char* prompt, size_t width,
            std::vector<BYTE> prefix = {}, bool closingRule = false) {
    std::string word;
    print(prompt);
    if (!readWord(width, &word)) return 0;
    if (closingRule) print(std::string(LONG_RULE) + '\n');
    std::vector<BYTE> request = std::move(prefix);
    for (BYTE b : iotRequest(word)) request.push_back(b);
    return exchange(cmdIndex, request, Report::Ack, funName).verdict;
}

int wordSet(int cmdIndex, char* funName, const Menu& menu) {
    int value = 0;
    if (!ask(menu, &value)) return 0;
    return exchange(cmdIndex, {static_cast<BYTE>(value & 0xFF), static_cast<BYTE>(value >> 8)},
                    Report::Ack, funName)
        .verdict;
}

// A menu whose option picks a 16-bit wire value.
int codedWordSet(int cmdIndex, char* funName, const Menu& menu, const int* values) {
    int option = 0;
    if (!ask(menu, &option)) return 0;
    int v = values[option];
    return exchange(cmdIndex, {static_cast<BYTE>(v & 0xFF), static_cast<BYTE>(v >> 8)}, Report::Ack,
                    funName)
        .verdict;
}

void rule() {
    print(std::string(LONG_RULE) + '\n');
}

}  // namespace

// ---------------------------------------------------------------- GET

int FUNC_ST_IOT_GET_APN(int cmdIndex, char* funName) {
    return textGet(cmdIndex, funName, {}, "fd(%d) APN = %s \n", IOT_STRING_MAX);
}
int FUNC_ST_IOT_GET_DNS(int cmdIndex, char* funName) {
    int index = 0;
    if (!ask(DNS_MENU, &index)) return 0;
    const BYTE request[] = {static_cast<BYTE>(index)};
    return textGet(cmdIndex, funName, request, "fd(%d) DNS = %s \n", IOT_STRING_MAX);
}
int FUNC_ST_IOT_GET_SERVER_IP(int cmdIndex, char* funName) {
    return textGet(cmdIndex, funName, {}, "fd(%d) Server IP = %s \n", IOT_STRING_MAX);
}
int FUNC_ST_IOT_GET_SERVER_PORT(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 2, renderServerPort);
}
int FUNC_ST_IOT_GET_IMEI(int cmdIndex, char* funName) {
    return textGet(cmdIndex, funName, {}, "fd(%d) IMEI = %s \n", IOT_STRING_MAX);
}
int FUNC_ST_IOT_GET_MACHINE_NAME(int cmdIndex, char* funName) {
    return textGet(cmdIndex, funName, {}, "fd(%d) Machine Name = %s \n", IOT_STRING_MAX);
}
int FUNC_ST_IOT_GET_PASSWORD(int cmdIndex, char* funName) {
    return textGet(cmdIndex, funName, {}, "fd(%d) Password = %s \n", IOT_STRING_MAX);
}
int FUNC_ST_IOT_GET_PHONE_NUMBER(int cmdIndex, char* funName) {
    int index = 0;
    if (!ask(PHONE_INDEX_ASK, &index)) return 0;
    return runGet(cmdIndex, funName, {static_cast<BYTE>(index), 1}, 0, renderPhoneNumber);
}
int FUNC_ST_IOT_GET_TRACKER_STATUS(int cmdIndex, char* funName) {
    return shapes::runGet(GET_TRACKER_STATUS, cmdIndex, funName);
}
int FUNC_ST_IOT_GET_TRACKER_MODE(int cmdIndex, char* funName) {
    return shapes::runGet(GET_TRACKER_MODE, cmdIndex, funName);
}
int FUNC_ST_IOT_GET_TRACKER_DELAY_TIME(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 2, renderTrackerDelay);
}
int FUNC_ST_IOT_GET_TRACKER_RESPONSE_TIME(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 2, renderTrackerResponse);
}
int FUNC_ST_IOT_GET_TRACKER_THRESHTAP(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 1, renderThreshtap);
}
int FUNC_ST_IOT_GET_TRACKER_ANGLE(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 1, renderAngle);
}
int FUNC_ST_IOT_GET_SMS_STATUS(int cmdIndex, char* funName) {
    return shapes::runGet(GET_SMS_STATUS, cmdIndex, funName);
}
int FUNC_ST_IOT_GET_SMS_CODING_TYPE(int cmdIndex, char* funName) {
    return shapes::runGet(GET_SMS_CODING_TYPE, cmdIndex, funName);
}
int FUNC_ST_IOT_GET_SMS_CONTENT(int cmdIndex, char* funName) {
    return textGet(cmdIndex, funName, {}, "fd(%d) SMS Message [ %s ] \n", SMS_TEXT_MAX, false);
}
int FUNC_ST_IOT_GET_SMS_RESPONSE_TIME(int cmdIndex, char* funName) {
    return runGet(cmdIndex, funName, {}, 2, renderSmsResponseTime);
}

// ---------------------------------------------------------------- SET

int FUNC_ST_IOT_SET_APN(int cmdIndex, char* funName) {
    rule();
    return textSet(cmdIndex, funName, "Input APN, EX: internet (maximum 64 character) : ", 64, {},
                   true);
}
int FUNC_ST_IOT_SET_DNS(int cmdIndex, char* funName) {
    rule();
    int index = 0;
    if (!ask(DNS_MENU, &index)) return 0;
    return textSet(cmdIndex, funName, "Input DNS, EX: 8.8.8.8 (maximum 16 character) : ", 16,
                   {static_cast<BYTE>(index)});
}
int FUNC_ST_IOT_SET_SERVER_IP(int cmdIndex, char* funName) {
    rule();
    return textSet(cmdIndex, funName,
                   "Input Server IP, EX: 192.168.0.1 (maximum 16 character) : ", 16);
}
int FUNC_ST_IOT_SET_MACHINE_NAME(int cmdIndex, char* funName) {
    rule();
    return textSet(cmdIndex, funName,
                   "Input Machine Name, EX: IOT-Test (maximum 16 character) : ", 16);
}
int FUNC_ST_IOT_SET_PASSWORD(int cmdIndex, char* funName) {
    rule();
    return textSet(cmdIndex, funName,
                   "Input Password Name, EX: IOT-Test (maximum 16 character) : ", 16);
}
int FUNC_ST_IOT_SET_PHONE_NUMBER(int cmdIndex, char* funName) {
    rule();
    int index = 0;
    if (!ask({nullptr, {}, 0, 9, false, "Input Phone Number Index (0~9) : "}, &index)) return 0;
    print("Input Phone Number, EX: +886988123456 : ");
    std::string number;
    if (!readWord(20, &number)) return 0;
    // Index, the byte 1, the number, a gap byte (0) and a comma.
    std::vector<BYTE> request;
    request.push_back(static_cast<BYTE>(index));
    request.push_back(1);
    for (char c : number) request.push_back(static_cast<BYTE>(c));
    request.push_back(0);
    request.push_back(',');
    return exchange(cmdIndex, request, Report::Ack, funName).verdict;
}
int FUNC_ST_IOT_SET_SMS_CONTENT(int cmdIndex, char* funName) {
    rule();
    print("Edit SMS Message, EX: This is test. (maximum 128 character) : ");
    std::string text;
    if (!readRest(SMS_TEXT_MAX, &text)) return 0;
    // The length byte, the text and one byte more (0).
    std::vector<BYTE> request = iotRequest(text);
    request.push_back(0);
    return exchange(cmdIndex, request, Report::Ack, funName).verdict;
}
int FUNC_ST_IOT_SET_SERVER_PORT(int cmdIndex, char* funName) {
    return wordSet(cmdIndex, funName, PORT_ASK);
}
int FUNC_ST_IOT_SET_SMS_RESPONSE_TIME(int cmdIndex, char* funName) {
    return wordSet(cmdIndex, funName, SMS_TIME_ASK);
}
int FUNC_ST_IOT_SET_TRACKER_CONTROL(int cmdIndex, char* funName) {
    return shapes::runMenu(SET_TRACKER_CONTROL, cmdIndex, funName);
}
int FUNC_ST_IOT_SET_TRACKER_MODE(int cmdIndex, char* funName) {
    return shapes::runMenu(SET_TRACKER_MODE, cmdIndex, funName);
}
int FUNC_ST_IOT_SET_TRACKER_DELAY_TIME(int cmdIndex, char* funName) {
    return codedWordSet(cmdIndex, funName, DELAY_MENU, TRACKER_DELAY_SECONDS);
}
int FUNC_ST_IOT_SET_TRACKER_RESPONSE_TIME(int cmdIndex, char* funName) {
    return codedWordSet(cmdIndex, funName, RESPONSE_MENU, TRACKER_RESPONSE_SECONDS);
}
int FUNC_ST_IOT_SET_TRACKER_THRESHTAP(int cmdIndex, char* funName) {
    return runChoice(cmdIndex, funName, THRESHTAP_MENU, THRESHTAP_CODES);
}
int FUNC_ST_IOT_SET_TRACKER_ANGLE(int cmdIndex, char* funName) {
    return runChoice(cmdIndex, funName, ANGLE_MENU, ANGLE_CODES);
}
int FUNC_ST_IOT_SET_SMS_CONTROL(int cmdIndex, char* funName) {
    return shapes::runMenu(SET_SMS_CONTROL, cmdIndex, funName);
}
int FUNC_ST_IOT_SET_SMS_CODING_TYPE(int cmdIndex, char* funName) {
    return shapes::runMenu(SET_SMS_CODING_TYPE, cmdIndex, funName);
}

namespace iot {

namespace {
const shapes::GetRef GET_LIST[] = {
    {FUNC_ST_IOT_GET_TRACKER_STATUS, GET_TRACKER_STATUS},
    {FUNC_ST_IOT_GET_TRACKER_MODE, GET_TRACKER_MODE},
    {FUNC_ST_IOT_GET_SMS_STATUS, GET_SMS_STATUS},
    {FUNC_ST_IOT_GET_SMS_CODING_TYPE, GET_SMS_CODING_TYPE},
};
const shapes::MenuRef MENU_LIST[] = {
    {FUNC_ST_IOT_SET_TRACKER_CONTROL, SET_TRACKER_CONTROL},
    {FUNC_ST_IOT_SET_TRACKER_MODE, SET_TRACKER_MODE},
    {FUNC_ST_IOT_SET_SMS_CONTROL, SET_SMS_CONTROL},
    {FUNC_ST_IOT_SET_SMS_CODING_TYPE, SET_SMS_CODING_TYPE},
};
}  // namespace

const std::span<const shapes::GetRef> getRows = GET_LIST;
const std::span<const shapes::MenuRef> menuRows = MENU_LIST;

}  // namespace iot
