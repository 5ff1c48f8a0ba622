/* A plain C99 program against the public headers and the shared library. */
#include <quorin/Quorin.h>

#include <stdio.h>
#include <stdlib.h>

/* A client's host: every colour space it has is indexed over nothing. */
static int32_t IndexedModel(const QuorinHostOrlColorSpace *space) {
    (void)space;
    return kQuorinOrlColorSpaceModel_Indexed;
}
static QuorinHostOrlColorSpace *NoBase(const QuorinHostOrlColorSpace *space) {
    (void)space;
    return NULL;
}

/* The bridge a client fills is the one the library reads, across the
 * shared object's boundary. */
static int InstallsHostFunctions(void) {
    QuorinOrlImageFormat format = {8, 8, NULL, 0, 0, NULL, 0};
    format.colorSpace = (QuorinHostOrlColorSpace *)&format; /* any address stands for a space */
    if (_QuorinOrlImageFormat_Check(&format, 0) != 0) return 0; /* no model query yet */
    _sQuorinOrlBridgeSymbolTable.ColorSpaceGetModel = IndexedModel;
    _sQuorinOrlBridgeSymbolTable.ColorSpaceGetBaseColorSpace = NoBase;
    if (_QuorinOrlImageFormat_Check(&format, 0) != 1 || _QuorinOrlImageFormat_Check(&format, 1) != 0) return 0;
    _sQuorinOrlBridgeSymbolTable.ColorSpaceGetModel = NULL;
    return _QuorinOrlImageFormat_IsRGBColorSpace(&format) == 0 && kQuorin_YpCbCrToARGBMatrix_ITU_R_709_2->Cb_B == 1.8556f;
}

int main(void) {
    Quorin_Buffer buffer;
    Quorin_Error error = QuorinBuffer_Init(&buffer, 3, 5, 32, 0);
    if (error != kQuorinSuccess || buffer.data == NULL || buffer.rowBytes != 32) {
        fprintf(stderr, "QuorinBuffer_Init: %d, rowBytes %lu\n", (int)error, (unsigned long)buffer.rowBytes);
        return 1;
    }
    free(buffer.data);
    if (_QuorinDispatchApplyOnRows(1, 1, NULL) != kQuorinError_InternalFault) return 2;
    if (!InstallsHostFunctions()) return 3;
    printf("vector kernels: %d\n", Quorin_HasFeature(1));
    return 0;
}
