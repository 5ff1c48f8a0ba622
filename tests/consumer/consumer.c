/* A plain C99 program against the public headers and the shared library. */
#include <quorin/Quorin.h>

#include <stdio.h>
#include <stdlib.h>

int main(void) {
    Quorin_Buffer buffer;
    Quorin_Error error = QuorinBuffer_Init(&buffer, 3, 5, 32, 0);
    if (error != kQuorinSuccess || buffer.data == NULL || buffer.rowBytes != 32) {
        fprintf(stderr, "QuorinBuffer_Init: %d, rowBytes %lu\n", (int)error, (unsigned long)buffer.rowBytes);
        return 1;
    }
    free(buffer.data);
    if (_QuorinDispatchApplyOnRows(1, 1, NULL) != kQuorinError_InternalFault) return 2;
    printf("vector kernels: %d\n", Quorin_HasFeature(1));
    return 0;
}
