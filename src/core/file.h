// The place of files in the class tree of streams.
#ifndef PLINTH_FILE_H
#define PLINTH_FILE_H

#include "core/stream.h"

namespace Plinth {

class File : public Stream {};

}  // namespace Plinth

#endif
