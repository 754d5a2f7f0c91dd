#include "tests/unit/assimp_import/shown_normals.h"

#include <mesh.h>

#include <cstddef>

using maxhost::scene::Vec3;

namespace {

Vec3 ToVec3(const Point3& p) {
    return {p.x, p.y, p.z};
}

Point3 ToPoint(const Vec3& v) {
    return Point3(v[0], v[1], v[2]);
}

void Fill(Mesh& mesh, const maxhost::scene::Mesh& description) {
    mesh.setNumVerts(static_cast<int>(description.vertices.size()));
    for (std::size_t i = 0; i < description.vertices.size(); ++i) {
        mesh.verts[i] = ToPoint(description.vertices[i]);
    }
    mesh.setNumFaces(static_cast<int>(description.faces.size()));
    for (std::size_t i = 0; i < description.faces.size(); ++i) {
        const maxhost::scene::Face& face = description.faces[i];
        mesh.faces[i].setVerts(static_cast<int>(face.v[0]), static_cast<int>(face.v[1]),
                               static_cast<int>(face.v[2]));
        mesh.faces[i].setSmGroup(face.smoothing);
        mesh.faces[i].setMatID(face.material);
    }
    mesh.checkNormals(FALSE);
    for (const auto& [vertex, normal] : description.normals) {
        RVertex& rendered = mesh.getRVert(static_cast<int>(vertex));
        rendered.rFlags |= SPECIFIED_NORMAL;
        rendered.rn.setNormal(ToPoint(normal));
    }
    mesh.buildNormals();
}

Vec3 NormalAt(Mesh& mesh, int face, DWORD vertex) {
    RVertex& rendered = mesh.getRVert(static_cast<int>(vertex));
    const DWORD groups = mesh.faces[face].getSmGroup();
    const DWORD count = rendered.rFlags & NORCT_MASK;
    if ((rendered.rFlags & SPECIFIED_NORMAL) || (count == 1 && groups != 0)) {
        return ToVec3(rendered.rn.getNormal());
    }
    for (DWORD i = 0; count > 1 && i < count; ++i) {
        if (rendered.ern[i].getSmGroup() & groups) {
            return ToVec3(rendered.ern[i].getNormal());
        }
    }
    return ToVec3(mesh.getFaceNormal(face));
}

}  // namespace

std::vector<CornerNormals> ShownNormals(const maxhost::scene::Mesh& description) {
    Mesh mesh;
    Fill(mesh, description);
    std::vector<CornerNormals> normals(description.faces.size());
    for (std::size_t i = 0; i < normals.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            normals[i][k] = NormalAt(mesh, static_cast<int>(i), description.faces[i].v[k]);
        }
    }
    return normals;
}
