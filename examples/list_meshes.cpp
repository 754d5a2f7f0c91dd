// Lists the meshes of an actor file. By itself, where the reader is installed:
//   c++ -std=c++20 list_meshes.cpp $(pkg-config --cflags --libs kta_reader) -o list_meshes
#include <kta/reader.h>

#include <iostream>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: list_meshes ACTOR\n";
        return 2;
    }
    const kta::Reading reading = kta::ReadFile(argv[1], kFileKindActor);
    for (const std::string& line : kta::FaultLines(argv[1], reading)) {
        std::cerr << line << '\n';
    }
    if (!reading.file) {
        return 1;
    }
    std::vector<std::string_view> nodes;  // names, by node number
    for (const kta::Chunk& chunk : reading.file->chunks) {
        if (const auto* node = chunk.As<KTANode>()) {
            nodes.push_back(kta::TextOf(node->nodeName));
        } else if (const auto* mesh = chunk.As<kta::Mesh>()) {
            const auto number = static_cast<std::size_t>(mesh->head.nodeNumber);
            std::cout << (number < nodes.size() ? nodes[number] : "(no node)") << ": "
                      << mesh->head.vertexCount << " vertices, " << mesh->head.indexCount / 3
                      << " triangles, " << mesh->subMeshes.size() << " materials\n";
        }
    }
    return reading.Good() ? 0 : 1;
}
