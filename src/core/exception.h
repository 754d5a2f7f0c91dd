// The library's exception.
#ifndef PLINTH_EXCEPTION_H
#define PLINTH_EXCEPTION_H

namespace Plinth {

// Thrown by value. Owns copies of its two texts; a null text is taken for the empty one, and where
// memory for a copy is missing, the text reads as empty.
class Exception {
  public:
    Exception();
    explicit Exception(const char* descriptionText);
    Exception(const char* descriptionText, const char* functionText);
    Exception(const Exception& other);
    virtual ~Exception();

    virtual const char* Description() const;
    // Where the error arose.
    virtual const char* FunctionName() const;

    Exception& operator=(const Exception& other);

  private:
    char* description;
    char* functionName;
};

}  // namespace Plinth

#endif
