// Motion files in tests: the exporter at work on a scene of the test.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/sdk/host.h"
#include "tests/support/kta_bytes.h"
#include "tests/support/open_pass.h"
#include "tests/support/scene_parts.h"

namespace support {

// 1024 ticks a second, so that times and slopes come out even.
inline maxhost::scene::Time EvenTime(int start, int end) {
    return {32, 32, start, end};
}

struct Written {
    std::string bytes;
    std::vector<std::string> log;
};

// The bytes and the log that `operation` writes, with the scene open. `sampleRate` 0: keyframed.
inline Written Write(const maxhost::scene::Scene& scene, int sampleRate,
                     const std::function<void(OpenPass&, const std::vector<INode*>&)>& operation) {
    maxhost::Host& host = maxhost::Host::Instance();
    host.OpenScene(scene);
    Written written;
    {
        const LoggedLines log;
        ExportOptions options = DefaultExportOptions();
        options.sampleAnimation = sampleRate != 0;
        options.sampleRate = sampleRate;
        OpenPass pass(options);
        operation(pass, host.Nodes());
        written.bytes = pass.Written();
        written.log = log.Lines();
    }
    host.CloseScene();
    return written;
}

// The motion parts and tracks of all nodes.
inline Written WriteMotion(const maxhost::scene::Scene& scene, int sampleRate) {
    return Write(scene, sampleRate, [](OpenPass& pass, const std::vector<INode*>& nodes) {
        for (INode* node : nodes) {
            ExportMotionPart(*pass, node);
        }
    });
}

// A scene of one node.
inline maxhost::scene::Scene NodeScene(const maxhost::scene::Transform& transform,
                                       const maxhost::scene::Time& time = EvenTime(0, 1024)) {
    maxhost::scene::Scene scene;
    scene.time = time;
    scene.nodes = {MakeNode("Mover")};
    scene.nodes[0].transform = transform;
    return scene;
}

// Straight from one value to another, and held outside.
inline maxhost::scene::FloatController Ramp(int from, float fromValue, int to, float toValue) {
    maxhost::scene::Key first, last;
    first.time = from;
    first.value = fromValue;
    last.time = to;
    last.value = toValue;
    for (maxhost::scene::Key* key : {&first, &last}) {
        key->inType = key->outType = maxhost::scene::Tangent::linear;
    }
    return Keyed({first, last});
}

}  // namespace support
