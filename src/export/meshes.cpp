// Meshes: the mesh chunk of a geometric node.
#include <max.h>

#include "core/log.h"
#include "export/export_pass.h"
#include "scene/node.h"
#include "scene/sub_mesh.h"

using Plinth::Float32;
using Plinth::Int32;
using Plinth::UInt32;
using Plinth::UInt64;

namespace {

// 3ds Max's last channel, 99, has no part in the format.
enum { kFirstChannel = 1, kLastChannel = 98, kNumChannels = kLastChannel - kFirstChannel + 1 };

// Skinned meshes stand in the world, others in their object's space. To be made before the mesh is
// evaluated, which 3ds Max may do again where a transform is asked for.
struct SkinSpace {
    explicit SkinSpace(INode* node)
        : isSkinned(FindModifier(node, kPhysiqueModifierClassId).modifier != NULL ||
                    FindModifier(node, kSkinModifierClassId).modifier != NULL),
          positionTransform(1),
          normalTransform(1) {
        if (isSkinned) {
            positionTransform = node->GetObjectTM(0);
            normalTransform = positionTransform;
            normalTransform.NoTrans();
            normalTransform.NoScale();
        }
    }

    bool isSkinned;
    Matrix3 positionTransform;
    Matrix3 normalTransform;
};

// Reads the corners of a mesh's faces as they stand in the file.
class CornerReader {
  public:
    // Builds the mesh's normals.
    CornerReader(const SkinSpace& space, Mesh& mesh);

    Int32 NumPairs() const { return numPairs; }
    // All but the positions, which have no part in matching. The corners' texture coordinates stand
    // in this object until the next call.
    void Read(int face, CornerVertex corners[3]);

  private:
    CornerReader(const CornerReader&);
    CornerReader& operator=(const CornerReader&);

    struct Channel {
        const UVVert* vertices;  // null: there are none
        const TVFace* faces;
    };

    Point3 NormalOf(int face, int corner);
    void ReadPairs(int face, int corner, Float32* pairs) const;

    Mesh& mesh;
    const SkinSpace& space;
    Int32 numPairs;
    Channel channels[kNumChannels];  // the supported ones
    Float32 uvs[3][2 * kNumChannels];
};

CornerReader::CornerReader(const SkinSpace& meshSpace, Mesh& source)
    : mesh(source), space(meshSpace), numPairs(0) {
    mesh.buildNormals();
    mesh.checkNormals(TRUE);
    for (int i = kFirstChannel; i <= kLastChannel; ++i) {
        if (mesh.mapSupport(i)) {
            Channel& channel = channels[numPairs++];
            channel.vertices = mesh.getNumMapVerts(i) > 0 ? mesh.mapVerts(i) : NULL;
            channel.faces = mesh.mapFaces(i);
        }
    }
}

void CornerReader::Read(int face, CornerVertex corners[3]) {
    for (int i = 0; i < 3; ++i) {
        const int vertex = static_cast<int>(mesh.faces[face].v[i]);
        Point3 normal = NormalOf(face, i);
        if (space.isSkinned) {
            normal = Normalize(VectorTransform(space.normalTransform, normal));
        }
        corners[i].record.originalVertex = vertex;
        StoreVector(corners[i].record.normal, normal);
        ReadPairs(face, i, uvs[i]);
        corners[i].uvs = uvs[i];
    }
}

Point3 CornerReader::NormalOf(int face, int corner) {
    Face& source = mesh.faces[face];
    RVertex& vertex = mesh.getRVert(static_cast<int>(source.v[corner]));
    if (vertex.rFlags & SPECIFIED_NORMAL) {
        return vertex.rn.getNormal();
    }
    const DWORD group = source.getSmGroup();
    const DWORD count = vertex.rFlags & NORCT_MASK;
    if (count == 1 && group != 0) {
        return vertex.rn.getNormal();
    }
    for (DWORD i = 0; count > 1 && i < count; ++i) {
        if (vertex.ern[i].getSmGroup() & group) {
            return vertex.ern[i].getNormal();
        }
    }
    return mesh.getFaceNormal(face);
}

void CornerReader::ReadPairs(int face, int corner, Float32* pairs) const {
    static const Float32 kDefaults[3][2] = {{0.0f, 0.0f}, {1.0f, 0.0f}, {0.0f, 1.0f}};
    for (Int32 i = 0; i < numPairs; ++i) {
        const Channel& channel = channels[i];
        if (channel.vertices != NULL) {
            const UVVert& uv = channel.vertices[channel.faces[face].t[corner]];
            pairs[2 * i] = uv.x;
            pairs[2 * i + 1] = 1.0f - uv.y;
        } else {
            // The defaults take no part in the turning over of v.
            pairs[2 * i] = kDefaults[corner][0];
            pairs[2 * i + 1] = kDefaults[corner][1];
        }
    }
}

void LogSubMeshes(const SubMeshList& subMeshes) {
    Plinth::Log("Num SubMeshes: %d", subMeshes.Count());
    for (Int32 i = 0; i < subMeshes.Count(); ++i) {
        Plinth::Log("SubMesh #%d:", i);
        Plinth::Log("    + Material : %d", subMeshes[i].material);
        Plinth::Log("    + Num Verts: %d", subMeshes[i].numVertices);
        Plinth::Log("    + Num Faces: %d", subMeshes[i].numFaces);
    }
}

void LogDroppedFace(const Face& face, const Int32 indices[3], Int32 numPairs) {
    Plinth::Log("WARNING: Failed to find the indices for a given triangle!!!");
    Plinth::Log("indices  = [%d, %d, %d]", indices[0], indices[1], indices[2]);
    Plinth::Log("orgVerts = [%d, %d, %d]", static_cast<int>(face.v[0]), static_cast<int>(face.v[1]),
                static_cast<int>(face.v[2]));
    Plinth::Log("numUVs   = [%d, %d, %d]", numPairs, numPairs, numPairs);
}

// False where the sub-meshes do not fit into the format.
bool RunVertexPass(const ExportPass& pass, INode* node, const SkinSpace& space, Mesh* mesh,
                   SubMeshList& subMeshes) {
    Plinth::Log("EXPORTING SUBMESHES (%s)", "Vertex Pass");
    if (mesh == NULL) {
        return true;
    }
    CornerReader reader(space, *mesh);
    if (!subMeshes.Reserve(mesh->getNumFaces(), reader.NumPairs(), mesh->getNumVerts())) {
        return false;
    }
    const MaterialNumbers materials(pass, node);
    for (int i = 0; i < mesh->getNumFaces(); ++i) {
        CornerVertex corners[3];
        reader.Read(i, corners);
        if (!subMeshes.AddFace(materials.Of(mesh->faces[i]), corners)) {
            return false;
        }
    }
    for (Int32 i = 0; i < subMeshes.NumVertices(); ++i) {
        KTAVertex& vertex = subMeshes.VertexAt(i);
        StoreVector(vertex.position, space.positionTransform * mesh->verts[vertex.originalVertex]);
    }
    LogSubMeshes(subMeshes);
    return true;
}

void RunIndexPass(const Mesh* mesh, SubMeshList& subMeshes) {
    Plinth::Log("EXPORTING SUBMESHES (%s)", "Index Pass");
    subMeshes.NumberVertices();
    if (mesh == NULL) {
        return;
    }
    for (Int32 i = 0; i < subMeshes.NumAddedFaces(); ++i) {
        Int32 indices[3];
        if (!subMeshes.IndexFace(i, indices)) {
            LogDroppedFace(mesh->faces[i], indices, subMeshes.NumPairs());
        }
    }
    LogSubMeshes(subMeshes);
}

// Fills in the counts of the mesh itself, as 3ds Max has it.
void DescribeMesh(KTAMesh& header, const Mesh& mesh) {
    for (int i = kFirstChannel; i <= kLastChannel; ++i) {
        if (mesh.mapSupport(i) && mesh.getNumMapVerts(i) > 0) {
            ++header.mapChannelCount;
        }
    }
    header.originalVertexCount = mesh.getNumVerts();
    Plinth::Log("    + Texture map channels = %d", header.mapChannelCount);
    Plinth::Log("    + Original mesh vertices = %d", header.originalVertexCount);
}

void CountElements(KTAMesh& header, const SubMeshList& subMeshes) {
    header.subMeshCount = subMeshes.Count();
    for (Int32 i = 0; i < subMeshes.Count(); ++i) {
        header.vertexCount += subMeshes[i].numVertices;
        header.indexCount += 3 * subMeshes[i].numFaces;
    }
}

// The size that the chunk header announces. It deliberately leaves out the four bytes of a material
// number in full, and takes the header's number of channels for the pairs of a vertex, of which
// there is one for each supported channel: readers of the format know both.
UInt64 AnnouncedSize(const KTAMesh& header) {
    const UInt64 subMeshes = static_cast<UInt64>(header.subMeshCount) * sizeof(KTASubMesh);
    const UInt64 indices = static_cast<UInt64>(header.indexCount) * sizeof(UInt32);
    const UInt64 vertexSize =
        sizeof(KTAVertex) + static_cast<UInt64>(header.mapChannelCount) * 2 * sizeof(Float32);
    return sizeof(KTAMesh) + subMeshes + indices + header.vertexCount * vertexSize;
}

void WriteSubMesh(KTAWriter& writer, const SubMeshList& subMeshes, const SubMesh& subMesh) {
    KTASubMesh record = ZeroedRecord<KTASubMesh>();
    const bool inFull = subMesh.material >= kFirstFullMaterialNumber;
    record.materialNumber = static_cast<Plinth::UInt8>(
        inFull ? static_cast<Int32>(kFullMaterialNumber) : subMesh.material);
    record.indexCount = 3 * subMesh.numFaces;
    record.vertexCount = subMesh.numVertices;
    writer.WriteRecord(record);
    if (inFull) {
        writer.WriteRecord(subMesh.material);
    }
    const size_t size =
        sizeof(KTAVertex) + static_cast<size_t>(subMeshes.NumPairs()) * 2 * sizeof(Float32);
    for (Int32 i = 0; i < subMesh.numVertices; ++i) {
        writer.WriteRaw(&subMeshes.VertexOf(subMesh, i), size);
    }
    // The corners keep their order: the exchange of y and z does not reverse it.
    writer.WriteRaw(subMeshes.FacesOf(subMesh),
                    static_cast<size_t>(subMesh.numFaces) * sizeof(SubMeshFace));
}

void WriteMesh(KTAWriter& writer, const KTAMesh& header, const SubMeshList& subMeshes) {
    Plinth::Log("Writing to disk...");
    writer.BeginChunk(header, static_cast<UInt32>(AnnouncedSize(header)));
    for (Int32 i = 0; i < subMeshes.Count(); ++i) {
        WriteSubMesh(writer, subMeshes, subMeshes[i]);
    }
}

// Reads the node's mesh into the sub-meshes and counts it in `header`; false where there is nothing
// to write.
bool ReadMesh(const ExportPass& pass, INode* node, KTAMesh& header, SubMeshList& subMeshes) {
    const SkinSpace space(node);
    const TriangleMesh source(node);
    Mesh* const mesh = source.Get();
    bool fits = RunVertexPass(pass, node, space, mesh, subMeshes);
    if (fits) {
        RunIndexPass(mesh, subMeshes);
        if (mesh == NULL) {
            return false;
        }
        DescribeMesh(header, *mesh);
        CountElements(header, subMeshes);
        fits = AnnouncedSize(header) <= 0xffffffffu;
    }
    if (!fits) {
        Plinth::Log("WARNING: The mesh is too large and is left out");
    }
    return fits && header.vertexCount >= 3 && header.indexCount >= 3;
}

}  // namespace

void ExportMesh(ExportPass& pass, INode* node, bool isCollision) {
    Plinth::Log("Exporting mesh...");
    KTAMesh header = ZeroedRecord<KTAMesh>();
    header.nodeNumber = pass.exportedNodes.Find(node);
    header.isCollision = isCollision ? 1 : 0;
    {
        SubMeshList subMeshes;
        if (!ReadMesh(pass, node, header, subMeshes)) {
            return;
        }
        WriteMesh(pass.writer, header, subMeshes);
    }
    const float ratio = static_cast<float>(header.vertexCount) /
                        static_cast<float>(header.originalVertexCount) * 100.0f;
    Plinth::Log("    + Vertex ratio factor = %.1f%%", ratio);
    OpenSkinOf(pass, node);
}
