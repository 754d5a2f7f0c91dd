#include "kta/diff/references.h"

#include "kta/dump.h"
#include "kta/fields.h"

namespace kta {
namespace {

// Below every id of a node or material, with room for every number of 32 bits on either side.
constexpr std::int64_t kNothing = -(std::int64_t{1} << 33);

// Names hold no NUL.
template <class... Parts>
std::string Key(const Parts&... parts) {
    std::string key;
    ((key.append(parts) += '\0'), ...);
    return key;
}

// How often each text came so far.
class Counter {
  public:
    std::size_t Next(std::string key) { return ++counts_[std::move(key)]; }

  private:
    std::unordered_map<std::string, std::size_t> counts_;
};

}  // namespace

// ---------------------------------------------------------------- numbers

std::int64_t Numbered::IdOf(std::int64_t number) const {
    const bool exists = number >= 0 && static_cast<std::size_t>(number) < entries_.size();
    return exists ? entries_[static_cast<std::size_t>(number)].id : kNothing + number;
}

std::string Numbered::NameOf(std::int64_t number) const {
    if (number == -1) {
        return "null";
    }
    const bool exists = number >= 0 && static_cast<std::size_t>(number) < entries_.size();
    return exists ? QuotedText(entries_[static_cast<std::size_t>(number)].name)
                  : std::to_string(number);
}

std::int64_t Numbered::NumberOf(std::string_view name) const {
    const auto found = numbers_.find(name);
    return found == numbers_.end() ? -1 : found->second;
}

// An id for each name and place among those of that name.
class SharedIds {
  public:
    // The names in the order of their numbers.
    Numbered Bind(const std::vector<std::string_view>& names) {
        Numbered numbered;
        Counter counter;
        for (const std::string_view name : names) {
            const std::string ordinal = std::to_string(counter.Next(std::string(name)));
            const auto next = static_cast<std::int64_t>(ids_.size());
            const auto id = ids_.emplace(Key(name, ordinal), next).first->second;
            numbered.numbers_.emplace(name, static_cast<std::int64_t>(numbered.entries_.size()));
            numbered.entries_.push_back({id, name});
        }
        return numbered;
    }

  private:
    std::unordered_map<std::string, std::int64_t> ids_;
};

std::pair<References, References> BindReferences(const File& a, const File& b) {
    SharedIds nodes;
    SharedIds materials;
    const auto bind = [&](const File& file) {
        std::vector<std::string_view> nodeNames;
        std::vector<std::string_view> materialNames;
        for (const Chunk& chunk : file.chunks) {
            if (const auto* node = chunk.As<KTANode>()) {
                nodeNames.push_back(TextOf(node->nodeName));
            } else if (const auto* material = chunk.As<KTAMaterial>()) {
                materialNames.push_back(TextOf(material->materialName));
            }
        }
        return References{nodes.Bind(nodeNames), materials.Bind(materialNames)};
    };
    References first = bind(a);
    return {std::move(first), bind(b)};
}

// ---------------------------------------------------------------- counterparts

namespace {

// Positions of items with one key, of which the first ones are taken.
struct Waiting {
    std::vector<std::size_t> positions;
    std::size_t taken = 0;
};

}  // namespace

Match MatchByKeys(const std::vector<Keys>& a, const std::vector<Keys>& b) {
    Match match;
    match.counterparts.assign(a.size(), kNoCounterpart);
    std::vector<bool> taken(b.size(), false);
    const std::size_t rounds = !a.empty() ? a.front().size() : 0;
    for (std::size_t round = 0; round < rounds; ++round) {
        std::unordered_map<std::string_view, Waiting> waiting;
        for (std::size_t j = 0; j < b.size(); ++j) {
            if (!taken[j]) {
                waiting[b[j][round]].positions.push_back(j);
            }
        }
        for (std::size_t i = 0; i < a.size(); ++i) {
            const auto found =
                match.counterparts[i] == kNoCounterpart ? waiting.find(a[i][round]) : waiting.end();
            if (found != waiting.end() && found->second.taken < found->second.positions.size()) {
                match.counterparts[i] = found->second.positions[found->second.taken++];
                taken[match.counterparts[i]] = true;
            }
        }
    }
    for (std::size_t j = 0; j < b.size(); ++j) {
        if (!taken[j]) {
            match.added.push_back(j);
        }
    }
    return match;
}

// ---------------------------------------------------------------- what chunks are about

namespace {

std::string LayerName(std::uint8_t type) {
    const char* const name = LayerTypeName(type);
    return name != nullptr ? QuotedText(name) : std::to_string(type);
}

// An animated channel of one end of a wire.
std::string WireEndKey(std::string_view node, std::int32_t part, std::int32_t component) {
    return Key(node, std::to_string(part), std::to_string(component));
}

// Goes through a file's chunks in order: what some of them hang from is told by that alone.
class SubjectReader {
  public:
    explicit SubjectReader(const References& references) : references_(references) {}

    void Add(const Chunk& chunk, Subjects& subjects) {
        Subject subject;
        subject.chunk = &chunk;
        subject.place.offset = chunk.offset;
        Keys keys = Describe(chunk, subject);
        std::string name;
        for (const auto& [label, value] : subject.identity) {
            name += Key(value);
        }
        subject.ordinal =
            ordinals_.Next(Key(std::to_string(static_cast<int>(chunk.type->id)), name));
        subjects.list.push_back(std::move(subject));
        subjects.keys.push_back(std::move(keys));
    }

  private:
    Keys Describe(const Chunk& chunk, Subject& subject) {
        switch (chunk.type->id) {
            case kChunkNode:
                subject.place.node = nodes_++;
                return Named("node", TextOf(chunk.As<KTANode>()->nodeName), subject);
            case kChunkMaterial:
                subject.place.material = materials_++;
                return Named("material", TextOf(chunk.As<KTAMaterial>()->materialName), subject);
            case kChunkMaterialLayer:
                return Layer(*chunk.As<KTAMaterialLayer>(), subject);
            case kChunkMesh:
                return OfNode(chunk.As<Mesh>()->head.nodeNumber, subject);
            case kChunkWeights:
                return OfNode(chunk.As<Weights>()->head.nodeNumber, subject);
            case kChunkJointLimits:
                return OfNode(chunk.As<KTAJointLimits>()->nodeNumber, subject);
            case kChunkMorph:
                return MorphChannel(*chunk.As<Morph>(), subject);
            case kChunkWire:
                return Wire(*chunk.As<KTAWire>(), subject);
            case kChunkIKChain:
                return IKChain(*chunk.As<KTAIKChain>(), subject);
            case kChunkMotionPart:
                return MotionPart(*chunk.As<KTAMotionPart>(), subject);
            case kChunkKeyTrack:
                return Track(*chunk.As<KeyTrack>(), subject);
        }
        return {};
    }

    static Keys Named(const char* label, std::string_view name, Subject& subject) {
        subject.identity = {{label, QuotedText(name)}};
        return {std::string(name)};
    }

    Keys OfNode(std::int32_t number, Subject& subject) const {
        subject.place.node = number;
        subject.identity = {{"node", references_.nodes.NameOf(number)}};
        subject.owner = std::to_string(references_.nodes.IdOf(number));
        return {subject.owner};
    }

    // Of a layer whose file changed, material and type tell what it is.
    Keys Layer(const KTAMaterialLayer& layer, Subject& subject) const {
        const std::string_view texture = TextOf(layer.textureFileName);
        subject.place.material = materials_ - 1;
        subject.identity = {{"material", references_.materials.NameOf(materials_ - 1)},
                            {"layer", LayerName(layer.layerType)},
                            {"texture", QuotedText(texture)}};
        subject.owner = std::to_string(references_.materials.IdOf(materials_ - 1));
        subject.followsOwner =
            materials_ > 0 && layer.parentMaterial == static_cast<std::int16_t>(materials_ - 1);
        const std::string type = std::to_string(layer.layerType);
        return {Key(subject.owner, type, texture), Key(subject.owner, type)};
    }

    Keys MorphChannel(const Morph& morph, Subject& subject) const {
        const std::string_view node = TextOf(morph.head.nodeName);
        const std::string_view channel = TextOf(morph.channel.channelName);
        subject.place.node = references_.nodes.NumberOf(node);
        subject.identity = {{"node", QuotedText(node)}, {"channel", QuotedText(channel)}};
        subject.owner = node;
        return {Key(node, channel)};
    }

    Keys Wire(const KTAWire& wire, Subject& subject) const {
        const std::string_view first = TextOf(wire.firstNodeName);
        const std::string_view second = TextOf(wire.secondNodeName);
        subject.place.node = references_.nodes.NumberOf(first);
        subject.identity = {{"firstNode", QuotedText(first)},
                            {"firstVariable", QuotedText(TextOf(wire.firstVariable))},
                            {"secondNode", QuotedText(second)},
                            {"secondVariable", QuotedText(TextOf(wire.secondVariable))}};
        return {Key(WireEndKey(first, wire.firstPart, wire.firstComponent),
                    WireEndKey(second, wire.secondPart, wire.secondComponent)),
                Key(first, second)};
    }

    Keys IKChain(const KTAIKChain& chain, Subject& subject) const {
        const std::string_view node = TextOf(chain.nodeName);
        const std::string_view start = TextOf(chain.startJoint);
        const std::string_view end = TextOf(chain.endJoint);
        subject.place.node = references_.nodes.NumberOf(node);
        subject.identity = {{"node", QuotedText(node)},
                            {"startJoint", QuotedText(start)},
                            {"endJoint", QuotedText(end)}};
        subject.owner = node;
        return {Key(node, start, end), std::string(node)};
    }

    Keys MotionPart(const KTAMotionPart& part, Subject& subject) {
        const std::string name(TextOf(part.nodeName));
        partName_ = QuotedText(name);
        partKey_ = Key(name, std::to_string(parts_.Next(name)));
        return Named("node", name, subject);
    }

    // A track that is sampled in one file and keyframed in the other is of the same letter but for
    // its case, with another version.
    Keys Track(const KeyTrack& track, Subject& subject) const {
        const char letter = track.head.trackLetter;
        subject.identity = {{"node", partName_}, {"track", QuotedText({&letter, 1})}};
        subject.owner = partKey_;
        const std::string place(1, letter == 'r' ? 'R' : letter);
        return {Key(partKey_, place, std::to_string(subject.chunk->version)), Key(partKey_, place)};
    }

    const References& references_;
    Counter ordinals_;
    Counter parts_;
    std::int64_t nodes_ = 0;  // so far, as are the materials
    std::int64_t materials_ = 0;
    std::string partName_ = "null";
    std::string partKey_;
};

}  // namespace

std::vector<Subjects> SubjectsOf(const File& file, const References& references) {
    std::vector<Subjects> subjects(kNumChunkTypes);
    SubjectReader reader(references);
    for (const Chunk& chunk : file.chunks) {
        const auto kind = FindChunkType(chunk.type->id) - kChunkTypes;
        reader.Add(chunk, subjects[static_cast<std::size_t>(kind)]);
    }
    return subjects;
}

}  // namespace kta
