// The detected product name.
#include "product.h"

#include "context.h"

namespace core {

const char* productName() {
    return szProductName;
}

}  // namespace core
