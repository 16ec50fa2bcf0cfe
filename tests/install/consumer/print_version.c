/* Opens the terminal (serial port 0 when no USB terminal is found) and prints its version. */
#include <qz_32.h>
#include <stdio.h>

int main(void) {
    const int device = open_device(0, 115200);
    if (device <= 1) {
        fprintf(stderr, "no terminal: %d\n", device);
        return 1;
    }
    unsigned char length = 0;
    unsigned char version[256];
    const int status = get_version(device, &length, version);
    close_device(device);
    if (status != 0) {
        fprintf(stderr, "get_version: %d\n", status);
        return 1;
    }
    printf("%.*s\n", (int)length, (const char *)version);
    return 0;
}
