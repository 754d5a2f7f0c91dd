// Names in the fixed-width fields of records.
#ifndef PLINTH_COPY_NAME_H
#define PLINTH_COPY_NAME_H

namespace Plinth {

// Copies a C text into a field of `fieldSize` bytes: at most fieldSize - 1 characters, then zeros
// up to the field's end. A null text is the empty one; a fieldSize below 1 does nothing. The text
// may lie in the field itself.
void CopyName(char* field, int fieldSize, const char* text);

}  // namespace Plinth

#endif
