// Wired parameters: controllers that follow parameters elsewhere through expressions.
#ifndef HOST_SDK_INCLUDE_IPARAMWIRE_H
#define HOST_SDK_INCLUDE_IPARAMWIRE_H

#include <control.h>
#include <ifnpub.h>

#define WIRE_CONTROLLER_INTERFACE Interface_ID(0x25ce0f5c, 0x6c303d2f)

// Wires count from 0; null, and sub-number 0, for one that does not exist.
class IBaseWireControl : public StdControl, public FPMixinInterface {
  public:
    virtual int get_num_wires() = 0;
    // The owner of the parameter at the other end of wire i, and that parameter's number there.
    virtual Animatable* get_wire_parent(int i) = 0;
    virtual int get_wire_subnum(int i) = 0;
    virtual Control* get_co_controller(int i) = 0;  // the controller at the other end, or null
    // The expression that gives this parameter from the other one; the controller's own text.
    virtual MCHAR* get_expr_text(int i) = 0;

    virtual bool is_master() = 0;
    virtual bool is_slave() = 0;
    virtual bool is_two_way() = 0;

  protected:
    virtual ~IBaseWireControl() {}
};

// Null where `a` is no wire controller.
inline IBaseWireControl* GetWireControlInterface(Animatable* a) {
    return static_cast<IBaseWireControl*>(a->GetInterface(WIRE_CONTROLLER_INTERFACE));
}

#endif  // HOST_SDK_INCLUDE_IPARAMWIRE_H
