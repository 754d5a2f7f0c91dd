// Interfaces that go beyond a class; see Animatable::GetInterface(Interface_ID).
#ifndef HOST_SDK_INCLUDE_IFNPUB_H
#define HOST_SDK_INCLUDE_IFNPUB_H

class BaseInterface {
  protected:
    virtual ~BaseInterface() {}
};

// An interface that the object itself implements.
class FPMixinInterface : public BaseInterface {
  protected:
    virtual ~FPMixinInterface() {}
};

#endif  // HOST_SDK_INCLUDE_IFNPUB_H
