#include "host/sdk/scene/objects.h"

#include <dummy.h>
#include <iparamb2.h>
#include <triobj.h>

#include "host/sdk/calls.h"
#include "host/sdk/live_objects.h"
#include "host/sdk/scene/controllers.h"

Class_ID triObjectClassID(TRIOBJ_CLASS_ID, 0);
Class_ID dummyClassID(DUMMY_CLASS_ID, 0);

TriObject::~TriObject() {
}

Class_ID TriObject::ClassID() {
    return triObjectClassID;
}

int TriObject::CanConvertToType(Class_ID type) {
    return type == triObjectClassID;
}

Object* TriObject::ConvertToType(TimeValue, Class_ID type) {
    return CanConvertToType(type) ? this : nullptr;
}

int TriObject::NumPoints() {
    return mesh.numVerts;
}

namespace maxhost {
namespace {

void FillMapChannel(Mesh& mesh, int number, const scene::MapChannel& channel) {
    mesh.setMapSupport(number);
    mesh.setNumMapVerts(number, static_cast<int>(channel.vertices.size()));
    UVVert* vertex = mesh.mapVerts(number);
    for (const scene::Vec2& uv : channel.vertices) {
        *vertex++ = UVVert(uv[0], uv[1], 0.0f);
    }
    TVFace* face = mesh.mapFaces(number);
    for (const auto& corners : channel.faces) {
        (face++)->setTVerts(corners[0], corners[1], corners[2]);
    }
}

void FillSpecifiedNormals(Mesh& mesh, const std::map<std::uint32_t, scene::Vec3>& normals) {
    if (!normals.empty()) {
        mesh.checkNormals(FALSE);
    }
    for (const auto& [vertex, normal] : normals) {
        RVertex& rendered = mesh.getRVert(static_cast<int>(vertex));
        rendered.rFlags = SPECIFIED_NORMAL | 1;
        rendered.rn.setNormal(ToPoint(normal));
    }
}

void FillMesh(Mesh& mesh, const scene::Mesh& description) {
    mesh.setNumVerts(static_cast<int>(description.vertices.size()));
    for (int i = 0; i < mesh.numVerts; ++i) {
        mesh.verts[i] = ToPoint(description.vertices[i]);
    }
    mesh.setNumFaces(static_cast<int>(description.faces.size()));
    for (int i = 0; i < mesh.numFaces; ++i) {
        const scene::Face& from = description.faces[i];
        Face& to = mesh.faces[i];
        to.setVerts(from.v[0], from.v[1], from.v[2]);
        to.setSmGroup(from.smoothing);
        to.setMatID(from.material);
    }
    for (const auto& [number, channel] : description.channels) {
        FillMapChannel(mesh, number, channel);
    }
    FillSpecifiedNormals(mesh, description.normals);
}

// The object that ConvertToType makes; its caller owns it.
class ConvertedTriObject final : public TriObject {
  public:
    explicit ConvertedTriObject(const scene::Mesh& description) { FillMesh(mesh, description); }
    void DeleteThis() override { delete this; }

  private:
    LiveObject live_;
};

// A block whose parameter 0 is a constant.
class ConstantParamBlock final : public IParamBlock2 {
  public:
    explicit ConstantParamBlock(float value) : value_(value) {}

    BOOL GetValue(ParamID id, TimeValue, float& v, Interval&, int) override {
        if (id != 0) {
            return FALSE;
        }
        v = value_;
        return TRUE;
    }

  private:
    float value_;
};

// Ids and parameter block as described; `Base` says what kind of object it is.
template <class Base>
class DescribedObject : public Base, public SceneObject {
  public:
    explicit DescribedObject(const scene::Object& description)
        : superClassId_(description.superClassId.value_or(GEOMOBJECT_CLASS_ID)),
          classId_(ChooseClassId(description.classId, triObjectClassID)) {
        if (description.parameter0) {
            block_.emplace(*description.parameter0);
        }
    }

    Object* Get() override { return this; }

    SClass_ID SuperClassID() override {
        ++calls.objectClasses;
        return superClassId_;
    }
    Class_ID ClassID() override {
        ++calls.objectClasses;
        return classId_;
    }
    IParamBlock2* GetParamBlock(int i) override { return block_ && i == 0 ? &*block_ : nullptr; }

  private:
    SClass_ID superClassId_;
    Class_ID classId_;
    std::optional<ConstantParamBlock> block_;
};

// An object that is not a mesh.
class PlainObject final : public DescribedObject<Object> {
  public:
    using DescribedObject::DescribedObject;
};

// A mesh of class triObjectClassID.
class MeshObject final : public DescribedObject<TriObject> {
  public:
    explicit MeshObject(const scene::Object& description) : DescribedObject(description) {
        FillMesh(mesh, *description.mesh);
    }

    void ReleaseMesh() override {
        mesh.setNumVerts(0);
        mesh.setNumFaces(0);
        for (int channel = 0; channel < MAX_MESHMAPS; ++channel) {
            mesh.setMapSupport(channel, FALSE);
        }
    }
};

// A mesh of another class, an editable polygon object for instance.
class ConvertibleObject final : public DescribedObject<Object> {
  public:
    explicit ConvertibleObject(const scene::Object& description)
        : DescribedObject(description), mesh_(*description.mesh) {}

    int CanConvertToType(Class_ID type) override { return type == triObjectClassID; }
    Object* ConvertToType(TimeValue, Class_ID type) override {
        ++calls.conversions;
        return CanConvertToType(type) ? new ConvertedTriObject(mesh_) : nullptr;
    }
    int NumPoints() override { return static_cast<int>(mesh_.vertices.size()); }

  private:
    const scene::Mesh& mesh_;
};

scene::Object DummyDescription() {
    scene::Object dummy;
    dummy.superClassId = HELPER_CLASS_ID;
    dummy.classId = {dummyClassID.PartA(), dummyClassID.PartB()};
    return dummy;
}

}  // namespace

std::unique_ptr<SceneObject> MakeObject(const scene::Object* description) {
    if (description == nullptr) {
        return std::make_unique<PlainObject>(DummyDescription());
    }
    if (description->mesh == nullptr) {
        return std::make_unique<PlainObject>(*description);
    }
    if (ChooseClassId(description->classId, triObjectClassID) == triObjectClassID) {
        return std::make_unique<MeshObject>(*description);
    }
    return std::make_unique<ConvertibleObject>(*description);
}

}  // namespace maxhost
