// The bridge symbol tables: the host graphics and video functions, which are
// not linked but installed by a client that has them. Both start empty
// (zero-initialised), so every entry reads NULL until a client fills it.
#include "quorin/Utilities.h"

extern "C" {
QUORIN_API QuorinOrlBridgeSymbolTable _sQuorinOrlBridgeSymbolTable{};
QUORIN_API QuorinMekBridgeSymbolTable _sQuorinMekBridgeSymbolTable{};
}
