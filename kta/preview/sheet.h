// Several pictures of one size side by side, each with a line of text.
#pragma once

#include <string>

#include "kta/preview/picture.h"

namespace kta {

struct SheetSize {
    int columns = 1;
    int rows = 1;

    int Places() const { return columns * rows; }
};

// As many columns as rows, or one more, for so many pictures.
SheetSize SquareSheet(int pictures);

// Writes the line into the picture's lower left corner, as far as there is room. Printable ASCII;
// anything else shows as ?.
void WriteLine(Picture& picture, const std::string& line);

class Sheet {
  public:
    Sheet(const SheetSize& size, int pictureWidth, int pictureHeight);

    // Puts the picture into the next place, from the left to the right and then down.
    void Add(const Picture& picture);

    const Picture& Whole() const { return whole_; }

  private:
    SheetSize size_;
    int next_ = 0;
    Picture whole_;
};

}  // namespace kta
