// The chunk kinds of a KTA file, as one table. A chunk's id and version stand in its header;
// ids 5, 9, 11, 12 and 13 are never written.
#ifndef FORMAT_CHUNK_IDS_H
#define FORMAT_CHUNK_IDS_H

enum KTAChunkId {
    kChunkNode = 0,
    kChunkMotionPart = 1,
    kChunkKeyTrack = 2,
    kChunkMesh = 3,
    kChunkWeights = 4,
    kChunkMaterial = 6,
    kChunkMaterialLayer = 7,
    kChunkJointLimits = 8,
    kChunkMorph = 10,
    kChunkWire = 14,
    kChunkIKChain = 15
};

// The key track is the one chunk with two body layouts, told apart by its version.
enum KTAKeyTrackVersion { kKeyTrackSampled = 1, kKeyTrackKeyframed = 2 };

enum KTAFileKind { kFileKindMotion = 0, kFileKindActor = 1 };

struct KTAChunkType {
    KTAChunkId id;
    const char* name;
    unsigned int version;  // the newest one, where there are several
    KTAFileKind file;      // the kind of file that holds such chunks
};

static const KTAChunkType kChunkTypes[] = {
    {kChunkNode, "node", 3, kFileKindActor},
    {kChunkMotionPart, "motion part", 2, kFileKindMotion},
    {kChunkKeyTrack, "key track", kKeyTrackKeyframed, kFileKindMotion},
    {kChunkMesh, "mesh", 3, kFileKindActor},
    {kChunkWeights, "skinning weights", 1, kFileKindActor},
    {kChunkMaterial, "material", 2, kFileKindActor},
    {kChunkMaterialLayer, "material layer", 3, kFileKindActor},
    {kChunkJointLimits, "joint limits", 1, kFileKindActor},
    {kChunkMorph, "morph", 3, kFileKindActor},
    {kChunkWire, "parameter wiring", 1, kFileKindActor},
    {kChunkIKChain, "IK chain", 1, kFileKindActor}};

static const int kNumChunkTypes = static_cast<int>(sizeof(kChunkTypes) / sizeof(kChunkTypes[0]));

// The table's entry for an id; null for an id that is never written.
inline const KTAChunkType* FindChunkType(unsigned int id) {
    for (int i = 0; i < kNumChunkTypes; ++i) {
        if (static_cast<unsigned int>(kChunkTypes[i].id) == id) {
            return &kChunkTypes[i];
        }
    }
    return 0;
}

#endif
