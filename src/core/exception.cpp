#include "core/exception.h"

#include <stdlib.h>
#include <string.h>

namespace Plinth {

namespace {

// The C heap, not the memory manager: an exception may outlive every service of the library.
char* Duplicate(const char* text) {
    if (text == NULL) {
        text = "";
    }
    const size_t size = strlen(text) + 1;
    char* copy = static_cast<char*>(malloc(size));
    if (copy != NULL) {
        memcpy(copy, text, size);
    }
    return copy;
}

void Swap(char*& a, char*& b) {
    char* const former = a;
    a = b;
    b = former;
}

}  // namespace

Exception::Exception() : description(Duplicate("")), functionName(Duplicate("")) {
}

Exception::Exception(const char* descriptionText)
    : description(Duplicate(descriptionText)), functionName(Duplicate("")) {
}

Exception::Exception(const char* descriptionText, const char* functionText)
    : description(Duplicate(descriptionText)), functionName(Duplicate(functionText)) {
}

Exception::Exception(const Exception& other)
    : description(Duplicate(other.description)), functionName(Duplicate(other.functionName)) {
}

Exception::~Exception() {
    free(description);
    free(functionName);
}

const char* Exception::Description() const {
    return description != NULL ? description : "";
}

const char* Exception::FunctionName() const {
    return functionName != NULL ? functionName : "";
}

Exception& Exception::operator=(const Exception& other) {
    Exception copy(other);
    Swap(description, copy.description);
    Swap(functionName, copy.functionName);
    return *this;
}

}  // namespace Plinth
