// UART port layer: open, configure, lock and close the serial device of a link.
#pragma once

#include <termios.h>

#include <cstddef>
#include <cstdio>

typedef enum { BLKING = 0, NONBLKING = 1 } UART_MODE;
typedef enum { RS232 = 0, RS485 = 1 } UART_TYPE;

typedef void (*UART_TYPE_CALLBACK)(UART_TYPE type);

speed_t getBaudRate(int baudrate);
int initTIO(int baudrate, UART_MODE mode);
int UART_Open(const char* path, int baudrate, UART_MODE mode, UART_TYPE type,
              struct termios* newtio, UART_TYPE_CALLBACK callback);
// UART_Open refuses anything but a terminal character device, and waits at most
// BRDCTL_LOCK_TIMEOUT seconds (default 10) for a port another process holds. On failure
// UART_OpenFailure tells why (for this thread's last call).
const char* UART_OpenFailure();
int UART_Close(int fd);
// SIGTERM and SIGHUP put every open port back to the settings found on it, then end the
// process as the signal would have (a signal already ignored stays ignored).
void UART_RestoreOnTermination();
int UART_Send(int fd, char* data, int hex);
// The buffer belongs to the layer: valid until the next UART_Receive or UART_Close.
char* UART_Receive(int fd);
int IsUTF8(const char* str, size_t len);
long long getCurrentMiliSecs();

// Where the port layer's own text ("Locking device ...") goes: stdout unless a program
// that keeps stdout for its results (brdcan, brdflash) chooses stderr.
void UART_SetMessageStream(FILE* stream);

// The name that starts the layer's stderr lines ("brdctl: /dev/ttyS4: ...").
void UART_SetProgramName(const char* name);

// The termios record that init_MCU hands to UART_Open for a given numeric baud rate.
struct termios UART_LinkSettings(int baudrate);
// The record UART_Open hands to tcsetattr: `newtio` with the rate's speed code ORed in,
// corrected to 8N1 at that rate unless the rate is 115200 (initTIO's record when
// `newtio` is null).
struct termios UART_PortSettings(const struct termios* newtio, int baudrate, UART_MODE mode);
