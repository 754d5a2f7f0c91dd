// Wired parameters: each pair of wired channels becomes a record once both of its ends have been
// met, in either order.
#include <max.h>

#include <iparamwire.h>
#include <istdplug.h>

#include "core/array.h"
#include "core/format.h"
#include "export/export_pass.h"
#include "scene/bezier_keys.h"
#include "scene/wires.h"

using Plinth::Float32;
using Plinth::Int32;
using Plinth::UInt8;

namespace {

const Class_ID kPrsClassId(PRS_CONTROL_CLASS_ID, 0);
const Class_ID kWireFloatClassId(0x498702e7, 0x71f11549);
const Class_ID kFloatListClassId(FLOATLIST_CONTROL_CLASS_ID, 0);

enum { kNumParts = 3, kNumComponents = 3 };

// A part of a transform: position, rotation, scale.
Control* PartController(Control* transform, int part) {
    switch (part) {
        case 0:
            return transform->GetPositionController();
        case 1:
            return transform->GetRotationController();
        default:
            return transform->GetScaleController();
    }
}

Control* AxisController(Control* control, int component) {
    switch (component) {
        case 0:
            return control->GetXController();
        case 1:
            return control->GetYController();
        case 2:
            return control->GetZController();
        default:
            return NULL;
    }
}

struct ListEntry {
    Control* control;
    Float32 weight;
};

// The one place that asks a list controller.
void ReadList(Control* control, Plinth::Array<ListEntry>& entries) {
    IListControl* const list = GetIListControlInterface(control);
    const int count = list == NULL ? 0 : list->GetListCount();
    entries.Reserve(count);
    for (int i = 0; i < count; ++i) {
        const ListEntry entry = {list->GetSubCtrl(i), list->GetSubCtrlWeight(i, 0)};
        if (entry.control != NULL) {
            entries.Add(entry);
        }
    }
}

// The channel of its wire's first driver; null where that has none, and for a transform of
// position, rotation and scale, which is passed over.
Control* FirstDriver(IBaseWireControl* wire) {
    Animatable* const parent = wire->get_num_wires() > 0 ? wire->get_wire_parent(0) : NULL;
    if (parent == NULL || parent->ClassID() == kPrsClassId) {
        return NULL;
    }
    Control* const control = dynamic_cast<Control*>(parent);
    return control == NULL ? NULL : AxisController(control, wire->get_wire_subnum(0));
}

void StoreFirstEnd(KTAWire& record, const WireEnd& end) {
    Plinth::CopyName(record.firstNodeName, kNameSize, end.node->GetName());
    record.firstPart = end.part;
    record.firstComponent = end.component;
    record.firstWeight = 1.0f;
    if (end.wire == NULL) {
        return;
    }
    IBaseWireControl* const wire = GetWireControlInterface(end.wire);
    Plinth::CopyName(record.firstExpression, kNameSize, wire->get_expr_text(end.driver));
    Plinth::CopyName(record.firstVariable, kVariableNameSize,
                     MotionVariableName(end.part, end.component));
    record.firstWeight = end.weight;
    record.firstListWeight = end.listWeight;
    record.linkKind = end.linkKind;
}

// Exports one channel of a node.
class ChannelWires {
  public:
    ChannelWires(KTAWriter& ktaWriter, PendingWires& pendingWires, INode* channelNode,
                 int channelPart, int channelComponent)
        : writer(ktaWriter),
          pending(pendingWires),
          node(channelNode),
          part(channelPart),
          component(channelComponent) {}

    void Export(Control* channel) {
        if (channel->ClassID() == kFloatListClassId) {
            LinkList(channel);
        } else {
            LinkWire(channel, 1.0f, 0.0f);
        }
        CompleteWaiting(channel);
        pending.AddChannel(channel, node, part, component);
    }

  private:
    ChannelWires(const ChannelWires&);
    ChannelWires& operator=(const ChannelWires&);

    void LinkList(Control* channel);
    // Does nothing for any other controller than a wire.
    void LinkWire(Control* control, Float32 weight, Float32 listWeight);
    void LinkDriver(IBaseWireControl* wire, Control* driver, const WireEnd& end);
    // Writes the records that wait for the channel as their plain end.
    void CompleteWaiting(Control* channel);
    void WriteRecord(KTAWire& record, const char* expression, Float32 weight, Float32 listWeight);

    KTAWriter& writer;
    PendingWires& pending;
    INode* const node;
    const int part, component;
};

void ChannelWires::LinkList(Control* channel) {
    Plinth::Array<ListEntry> entries;
    ReadList(channel, entries);
    Float32 bezierWeight = 0.0f;
    for (Int32 i = 0; i < entries.Count(); ++i) {
        if (IsBezierFloat(entries[i].control)) {
            bezierWeight = entries[i].weight;
        }
    }
    for (Int32 i = 0; i < entries.Count(); ++i) {
        LinkWire(entries[i].control, entries[i].weight, bezierWeight);
    }
}

void ChannelWires::LinkWire(Control* control, Float32 weight, Float32 listWeight) {
    IBaseWireControl* const wire =
        control->ClassID() == kWireFloatClassId ? GetWireControlInterface(control) : NULL;
    if (wire == NULL) {
        return;
    }
    WireEnd end = {node, part, component, control, 0, weight, listWeight, 0};
    if (!wire->is_two_way()) {
        LinkDriver(wire, FirstDriver(wire), end);
    }
    for (int i = 0; i < wire->get_num_wires(); ++i) {
        end.driver = i;
        LinkDriver(wire, wire->get_co_controller(i), end);
    }
}

void ChannelWires::LinkDriver(IBaseWireControl* wire, Control* driver, const WireEnd& end) {
    if (driver == NULL) {
        return;
    }
    WireEnd first;
    if (!pending.Take(driver, end.wire, first)) {
        first = end;
        // The opposite of what a completed record gets: so the kind tells which end is the wired
        // one.
        first.linkKind = wire->is_master() ? 1 : 2;
        pending.AddLink(driver, first);
        return;
    }
    KTAWire record = ZeroedRecord<KTAWire>();
    StoreFirstEnd(record, first);
    record.linkKind = wire->is_master() ? 2 : 1;
    WriteRecord(record, wire->get_expr_text(end.driver), end.weight, end.listWeight);
}

void ChannelWires::CompleteWaiting(Control* channel) {
    WireEnd first;
    while (pending.TakeBySecond(channel, first)) {
        KTAWire record = ZeroedRecord<KTAWire>();
        StoreFirstEnd(record, first);
        WriteRecord(record, MotionVariableName(part, component), 1.0f, 0.0f);
    }
}

void ChannelWires::WriteRecord(KTAWire& record, const char* expression, Float32 weight,
                               Float32 listWeight) {
    Plinth::CopyName(record.secondNodeName, kNameSize, node->GetName());
    Plinth::CopyName(record.secondExpression, kNameSize, expression);
    Plinth::CopyName(record.secondVariable, kVariableNameSize, MotionVariableName(part, component));
    record.secondPart = part;
    record.secondComponent = component;
    record.secondWeight = weight;
    record.secondListWeight = listWeight;
    writer.WriteChunk(record);
}

}  // namespace

void ExportWires(ExportPass& pass, INode* node) {
    Control* const transform = node->GetTMController();
    for (int part = 0; transform != NULL && part < kNumParts; ++part) {
        Control* const control = PartController(transform, part);
        for (int i = 0; control != NULL && i < kNumComponents; ++i) {
            Control* const channel = AxisController(control, i);
            if (channel != NULL) {
                ChannelWires(pass.writer, pass.pendingWires, node, part, i).Export(channel);
            }
        }
    }
}
