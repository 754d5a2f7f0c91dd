#include "core/copy_name.h"

#include <string.h>

namespace Plinth {

void CopyName(char* field, int fieldSize, const char* text) {
    if (fieldSize < 1) {
        return;
    }
    int length = 0;
    if (text != NULL) {
        while (length < fieldSize - 1 && text[length] != '\0') {
            ++length;
        }
        memmove(field, text, length);
    }
    memset(field + length, 0, fieldSize - length);
}

}  // namespace Plinth
