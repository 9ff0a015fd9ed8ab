// The floor a brdctl run is compared with: a C++ program that opens the serial device,
// starts and joins one thread, and exits.
#include <fcntl.h>
#include <unistd.h>

#include <thread>

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    int fd = open(argv[1], O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) return 1;
    std::thread t([] {});
    t.join();
    close(fd);
    return 0;
}
