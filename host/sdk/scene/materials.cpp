#include "host/sdk/scene/materials.h"

#include <stdmat.h>

#include <algorithm>

#include "host/sdk/live_objects.h"
#include "host/sdk/scene/maps.h"

namespace maxhost {

class MaterialLibrary::Entry {
  public:
    virtual ~Entry() = default;
    virtual Mtl* Get() = 0;
    virtual void SetSubMaterials(std::vector<Mtl*> subMaterials) = 0;
};

namespace {

const Color kBlack(0.0f, 0.0f, 0.0f);

Color ToColor(const scene::Vec3& v) {
    return Color(v[0], v[1], v[2]);
}

Class_ID ToClassId(const scene::Material& material) {
    switch (material.kind) {
        case scene::MaterialKind::standard:
            return Class_ID(DMTL_CLASS_ID, 0);
        case scene::MaterialKind::multi:
            return Class_ID(MULTI_CLASS_ID, 0);
        case scene::MaterialKind::other:
            break;
    }
    return Class_ID(material.classId[0], material.classId[1]);
}

// Name, class, and sub-materials, for any kind of material.
template <class Base>
class DescribedMaterial : public Base, public MaterialLibrary::Entry {
  public:
    explicit DescribedMaterial(const scene::Material& description)
        : classId_(ToClassId(description)) {
        Base::SetName(MSTR(description.name.c_str()));
    }

    Mtl* Get() override { return this; }
    void SetSubMaterials(std::vector<Mtl*> subMaterials) override {
        subMaterials_ = std::move(subMaterials);
    }

    Class_ID ClassID() override { return classId_; }
    // Nothing in a material varies with time.
    void Update(TimeValue, Interval&) override {}
    int NumSubMtls() override { return static_cast<int>(subMaterials_.size()); }
    Mtl* GetSubMtl(int i) override {
        return i >= 0 && i < NumSubMtls() ? subMaterials_[i] : nullptr;
    }

  private:
    Class_ID classId_;
    std::vector<Mtl*> subMaterials_;  // null: an empty slot
};

// A material with colours and maps of its own.
template <class Base>
class ColoredMaterial : public DescribedMaterial<Base> {
  public:
    explicit ColoredMaterial(const scene::Material& description)
        : DescribedMaterial<Base>(description),
          ambient_(ToColor(description.ambient)),
          diffuse_(ToColor(description.diffuse)),
          specular_(ToColor(description.specular)),
          selfIllumination_(ToColor(description.selfIllumination)),
          shininess_(description.shininess),
          shininessStrength_(description.shininessStrength),
          transparency_(description.transparency),
          maps_(description.maps) {}

    int NumSubTexmaps() override { return maps_.Count(); }
    Texmap* GetSubTexmap(int i) override { return maps_.Get(i); }

    Color GetAmbient(int, BOOL) override { return ambient_; }
    Color GetDiffuse(int, BOOL) override { return diffuse_; }
    Color GetSpecular(int, BOOL) override { return specular_; }
    Color GetSelfIllumColor(int, BOOL) override { return selfIllumination_; }
    float GetShininess(int, BOOL) override { return shininess_; }
    float GetShinStr(int, BOOL) override { return shininessStrength_; }
    float GetXParency(int, BOOL) override { return transparency_; }

  protected:
    Color ambient_, diffuse_, specular_, selfIllumination_;
    float shininess_, shininessStrength_, transparency_;
    MapSlots maps_;
};

using OtherMaterial = ColoredMaterial<Mtl>;

class StandardMaterial : public ColoredMaterial<StdMat> {
  public:
    explicit StandardMaterial(const scene::Material& description)
        : ColoredMaterial(description),
          twoSided_(description.twoSided),
          wire_(description.wire),
          transparencyType_(description.transparencyType) {}

    using ColoredMaterial::GetAmbient;
    using ColoredMaterial::GetDiffuse;
    using ColoredMaterial::GetShininess;
    using ColoredMaterial::GetShinStr;
    using ColoredMaterial::GetSpecular;

    void SetDiffuse(Color c, TimeValue) override { diffuse_ = c; }
    Color GetAmbient(TimeValue) override { return ambient_; }
    Color GetDiffuse(TimeValue) override { return diffuse_; }
    Color GetSpecular(TimeValue) override { return specular_; }
    float GetShininess(TimeValue) override { return shininess_; }
    float GetShinStr(TimeValue) override { return shininessStrength_; }
    BOOL GetTwoSided() override { return twoSided_; }
    BOOL GetWire() override { return wire_; }
    int GetTransparencyType() override { return transparencyType_; }
    int NumSubTexmaps() override { return std::max(NTEXMAPS, maps_.Count()); }
    BOOL MapEnabled(int id) override { return maps_.IsEnabled(id); }
    float GetTexmapAmt(int id, TimeValue) override { return maps_.Amount(id); }

  private:
    bool twoSided_, wire_;
    int transparencyType_;
};

// Reports what its sub-material 0 reports, zeros where there is none.
class MultiMaterial final : public DescribedMaterial<Mtl> {
  public:
    using DescribedMaterial::DescribedMaterial;

    Color GetAmbient(int, BOOL) override { return First(&Mtl::GetAmbient, kBlack); }
    Color GetDiffuse(int, BOOL) override { return First(&Mtl::GetDiffuse, kBlack); }
    Color GetSpecular(int, BOOL) override { return First(&Mtl::GetSpecular, kBlack); }
    Color GetSelfIllumColor(int, BOOL) override { return First(&Mtl::GetSelfIllumColor, kBlack); }
    float GetShininess(int, BOOL) override { return First(&Mtl::GetShininess, 0.0f); }
    float GetShinStr(int, BOOL) override { return First(&Mtl::GetShinStr, 0.0f); }
    float GetXParency(int, BOOL) override { return First(&Mtl::GetXParency, 0.0f); }

  private:
    template <class Value>
    Value First(Value (Mtl::*getter)(int, BOOL), Value none) {
        Mtl* first = GetSubMtl(0);
        return first == nullptr ? none : (first->*getter)(0, FALSE);
    }
};

// The material that NewDefaultStdMat makes.
class DefaultMaterial final : public StandardMaterial {
  public:
    DefaultMaterial() : StandardMaterial(scene::Material{}) {}
    void DeleteThis() override { delete this; }

  private:
    LiveObject live_;
};

}  // namespace

MaterialLibrary::MaterialLibrary(
    const std::vector<std::shared_ptr<const scene::Material>>& materials) {
    for (const auto& material : materials) {
        Add(*material);
    }
    // Sub-materials name others by position, later ones too.
    for (std::size_t i = 0; i < materials.size(); ++i) {
        FillSubMaterials(*entries_[i], *materials[i]);
    }
}

MaterialLibrary::~MaterialLibrary() = default;

Mtl* MaterialLibrary::Get(int position) const {
    return position == scene::kNone ? nullptr : entries_[position]->Get();
}

MaterialLibrary::Entry* MaterialLibrary::Add(const scene::Material& description) {
    switch (description.kind) {
        case scene::MaterialKind::standard:
            entries_.push_back(std::make_unique<StandardMaterial>(description));
            break;
        case scene::MaterialKind::multi:
            entries_.push_back(std::make_unique<MultiMaterial>(description));
            break;
        case scene::MaterialKind::other:
            // Who meets the class id of standard materials takes the material for one.
            if (ToClassId(description) == Class_ID(DMTL_CLASS_ID, 0)) {
                entries_.push_back(std::make_unique<StandardMaterial>(description));
            } else {
                entries_.push_back(std::make_unique<OtherMaterial>(description));
            }
            break;
    }
    return entries_.back().get();
}

void MaterialLibrary::FillSubMaterials(Entry& entry, const scene::Material& description) {
    std::vector<Mtl*> subMaterials;
    subMaterials.reserve(description.subMaterials.size());
    for (const scene::SubMaterial& subMaterial : description.subMaterials) {
        subMaterials.push_back(Resolve(subMaterial));
    }
    entry.SetSubMaterials(std::move(subMaterials));
}

Mtl* MaterialLibrary::Resolve(const scene::SubMaterial& subMaterial) {
    if (const int* position = std::get_if<int>(&subMaterial)) {
        return Get(*position);
    }
    const auto* own = std::get_if<std::shared_ptr<const scene::Material>>(&subMaterial);
    if (own == nullptr) {
        return nullptr;
    }
    Entry* entry = Add(**own);
    FillSubMaterials(*entry, **own);  // nesting is limited by the scene's rules
    return entry->Get();
}

}  // namespace maxhost

StdMat* NewDefaultStdMat() {
    return new maxhost::DefaultMaterial;
}
