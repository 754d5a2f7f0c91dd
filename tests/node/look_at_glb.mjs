// What the Khronos validator says of GLB files and what three.js makes of them.
//
// usage: node look_at_glb.mjs FOLDER GLB...
//        node look_at_glb.mjs --validate FOLDER < NAMES
// With --validate three.js does not load them, their textures need not be there, and the files' names
// stand in the lines of standard input.
// FOLDER holds the node_modules of package.json. For each file one line of JSON:
// {"file", "errors": [TEXT, ...], "warnings": [TEXT, ...], "counts": {...}}; of three.js the counts. Exit status: 0, also for
// faulty files; a file that three.js cannot load ends the run with another.

import fs from "node:fs";
import { createRequire } from "node:module";
import path from "node:path";
import { pathToFileURL } from "node:url";

const onlyValidates = process.argv[2] === "--validate";
const [folder, ...named] = process.argv.slice(onlyValidates ? 3 : 2);
const files = onlyValidates ? fs.readFileSync(0, "utf8").trimEnd().split("\n") : named;
const imported = (file) => import(pathToFileURL(path.resolve(folder, "node_modules", file)));

const validator = createRequire(path.resolve(folder, "package.json"))("gltf-validator");
// The loader shows its pictures in a browser's page; what it shows counts here, not how.
globalThis.self = globalThis;
globalThis.ProgressEvent ??= class {};
const three = onlyValidates ? {} : await imported("three/build/three.module.js");
const { GLTFLoader } = onlyValidates
  ? {}
  : await imported("three/examples/jsm/loaders/GLTFLoader.js");

const severities = { 0: "errors", 1: "warnings" };

// Textures that are referred to stand beside the file.
async function validate(file, bytes) {
  const report = await validator.validateBytes(new Uint8Array(bytes), {
    uri: file,
    maxIssues: 0,
    ignoredIssues: onlyValidates ? ["IO_ERROR"] : [],
    externalResourceFunction: async (uri) =>
      new Uint8Array(fs.readFileSync(path.join(path.dirname(file), decodeURIComponent(uri)))),
  });
  const found = { errors: [], warnings: [] };
  for (const { severity, code, message, pointer } of report.issues.messages) {
    found[severities[severity]]?.push(`${code} at ${pointer}: ${message}`);
  }
  return found;
}

class NoTextures {
  constructor(parser) {
    this.name = "no textures";
    this.parser = parser;
  }
  loadTexture() {
    return Promise.resolve(new three.Texture());
  }
}

async function load(bytes) {
  const loader = new GLTFLoader();
  loader.register((parser) => new NoTextures(parser));
  const buffer = bytes.buffer.slice(bytes.byteOffset, bytes.byteOffset + bytes.byteLength);
  return loader.parseAsync(buffer, "");
}

// What came of each of the document's objects; a node's mesh of several primitives is a group.
function count(gltf) {
  const nodes = new Set();
  const meshes = new Set();
  const joints = new Set();
  const counts = { primitives: 0, vertices: 0, triangles: 0, targets: 0 };
  gltf.scene?.traverse((object) => {
    const origin = gltf.parser.associations.get(object) ?? {};
    if (origin.nodes !== undefined) nodes.add(origin.nodes);
    if (origin.meshes !== undefined) meshes.add(origin.meshes);
    if (object.isMesh) {
      const { attributes, index, morphAttributes } = object.geometry;
      counts.primitives += 1;
      counts.vertices += attributes.position.count;
      counts.triangles += index.count / 3;
      counts.targets += morphAttributes.position?.length ?? 0;
    }
    if (object.isSkinnedMesh) object.skeleton.bones.forEach((bone) => joints.add(bone));
  });
  return {
    nodes: nodes.size,
    meshes: meshes.size,
    ...counts,
    joints: joints.size,
    animations: gltf.animations.length,
    channels: gltf.animations.reduce((sum, clip) => sum + clip.tracks.length, 0),
  };
}

for (const file of files) {
  const bytes = fs.readFileSync(file);
  const counts = onlyValidates ? {} : { counts: count(await load(bytes)) };
  console.log(JSON.stringify({ file, ...(await validate(file, bytes)), ...counts }));
}
