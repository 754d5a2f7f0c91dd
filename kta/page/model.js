'use strict';
// The model: the page's GLB file read by three.js, with vertices that bones and morph channels move
// computed here, since a graphics card takes four bones a vertex and the files have more.

// The two chunks of a GLB file.
function glbChunks(buffer) {
    const view = new DataView(buffer);
    const jsonSize = view.getUint32(12, true);
    const json = JSON.parse(new TextDecoder().decode(new Uint8Array(buffer, 20, jsonSize)));
    return { json: json, rest: new Uint8Array(buffer, 20 + jsonSize) };
}

function glbFrom(json, rest) {
    let text = new TextEncoder().encode(JSON.stringify(json));
    const padded = new Uint8Array(Math.ceil(text.length / 4) * 4).fill(0x20);
    padded.set(text);
    const file = new Uint8Array(20 + padded.length + rest.length);
    const view = new DataView(file.buffer);
    [0x46546c67, 2, file.length, padded.length, 0x4e4f534a].forEach((number, i) =>
        view.setUint32(4 * i, number, true));
    file.set(padded, 20);
    file.set(rest, 20 + padded.length);
    return file.buffer;
}

// Without the textures whose images are not in the file.
function withoutOutsideImages(json) {
    const isOutside = reference => {
        const texture = (json.textures || [])[reference.index];
        return texture && (json.images[texture.source] || {}).uri !== undefined;
    };
    const clear = object => Object.keys(object).forEach(key => {
        const value = object[key];
        if (value === null || typeof value !== 'object') return;
        if (value.index !== undefined && isOutside(value)) delete object[key];
        else clear(value);
    });
    clear(json.materials || []);
}

// What three.js shall read: nodes of names that are their own, since tracks find nodes by name, and
// meshes at rest, since skins and morph targets are the parts'.
function plainGlb(json, rest) {
    const plain = JSON.parse(JSON.stringify(json));
    (plain.nodes || []).forEach((node, i) => {
        node.name = 'n' + i;
        delete node.skin;
    });
    delete plain.skins;
    (plain.meshes || []).forEach(mesh => {
        delete mesh.weights;
        mesh.primitives.forEach(primitive => delete primitive.targets);
    });
    withoutOutsideImages(plain);
    return glbFrom(plain, rest);
}

// A primitive of a mesh.
class Part {
    constructor(object, actorNode, material) {
        this.object = object;
        this.actorNode = actorNode;  // number, or undefined
        this.material = material;    // number in the actor file, or -1
        this.look = object.material;
        this.skin = null;     // {joints, inverses, sets: [{joints, weights}]}
        this.targets = [];    // displacements
        this.weights = [];    // of the targets
        const geometry = object.geometry;
        this.positions = geometry.attributes.position.array.slice();
        this.normals = geometry.attributes.normal ? geometry.attributes.normal.array.slice() : null;
        this.coordinates = geometry.attributes.uv;
        object.frustumCulled = false;
    }

    // Those of the file.
    restoreCoordinates() {
        if (this.coordinates) this.object.geometry.setAttribute('uv', this.coordinates);
        else this.object.geometry.deleteAttribute('uv');
    }

    get vertexCount() { return this.positions.length / 3; }

    takeSkin(joints, inverses) {
        const attributes = this.object.geometry.attributes;
        const sets = [];
        for (let i = 0; ; ++i) {
            const names = i === 0 ? ['skinIndex', 'skinWeight'] : ['joints_' + i, 'weights_' + i];
            if (!attributes[names[0]] || !attributes[names[1]]) break;
            sets.push({ joints: attributes[names[0]].array, weights: attributes[names[1]].array });
            names.forEach(name => this.object.geometry.deleteAttribute(name));
        }
        this.skin = { joints: joints, inverses: inverses, sets: sets };
    }

    // Of each vertex, how much of it a node moves.
    weightsOf(node) {
        const shares = new Float32Array(this.vertexCount);
        if (!this.skin) return shares;
        const joint = this.skin.joints.indexOf(node);
        this.skin.sets.forEach(set => {
            for (let i = 0; i < set.joints.length; ++i) {
                if (set.joints[i] === joint) shares[i >> 2] += set.weights[i];
            }
        });
        return shares;
    }

    // Puts the vertices where morph channels and bones have them.
    deform(nodes) {
        if (!this.skin && !this.targets.length) return;
        const geometry = this.object.geometry;
        const positions = geometry.attributes.position.array;
        positions.set(this.positions);
        this.targets.forEach((target, t) => {
            const weight = this.weights[t];
            if (weight === 0) return;
            for (let i = 0; i < positions.length; ++i) positions[i] += weight * target[i];
        });
        if (this.skin) this.moveByBones(nodes, positions, geometry.attributes.normal.array);
        geometry.attributes.position.needsUpdate = true;
        if (geometry.attributes.normal) geometry.attributes.normal.needsUpdate = true;
        geometry.boundingSphere = null;
    }

    moveByBones(nodes, positions, normals) {
        const matrices = this.jointMatrices(nodes);
        const m = new Float64Array(12);
        for (let vertex = 0; vertex < this.vertexCount; ++vertex) {
            m.fill(0);
            for (const set of this.skin.sets) {
                for (let k = 4 * vertex; k < 4 * vertex + 4; ++k) {
                    const weight = set.weights[k];
                    if (weight === 0) continue;
                    const from = 12 * set.joints[k];
                    for (let i = 0; i < 12; ++i) m[i] += weight * matrices[from + i];
                }
            }
            const at = 3 * vertex;
            moveVector(m, positions, positions, at, 1);
            moveVector(m, this.normals, normals, at, 0);
        }
    }

    // Three columns and the translation of each joint's way from rest.
    jointMatrices(nodes) {
        const matrices = new Float64Array(12 * this.skin.joints.length);
        const way = new THREE.Matrix4();
        const inverse = new THREE.Matrix4();
        this.skin.joints.forEach((joint, j) => {
            inverse.fromArray(this.skin.inverses, 16 * j);
            way.multiplyMatrices(nodes[joint].matrixWorld, inverse);
            for (let i = 0; i < 12; ++i) matrices[12 * j + i] = way.elements[i + Math.floor(i / 3)];
        });
        return matrices;
    }
}

function moveVector(m, source, target, at, withTranslation) {
    const x = source[at], y = source[at + 1], z = source[at + 2];
    for (let i = 0; i < 3; ++i) {
        target[at + i] = m[i] * x + m[3 + i] * y + m[6 + i] * z + m[9 + i] * withTranslation;
    }
}

// glTF scales, turns and moves texture coordinates; three.js turns before it scales.
function placeTexture(material, materialJson) {
    const reference = ((materialJson.pbrMetallicRoughness || {}).baseColorTexture || {});
    const transform = (reference.extensions || {}).KHR_texture_transform;
    if (!material.map || !transform) return;
    const scale = transform.scale || [1, 1], offset = transform.offset || [0, 0];
    const c = Math.cos(transform.rotation || 0), s = Math.sin(transform.rotation || 0);
    material.map.matrixAutoUpdate = false;
    material.map.matrix.set(scale[0] * c, scale[1] * s, offset[0],
                            -scale[0] * s, scale[1] * c, offset[1], 0, 0, 1);
}

class Model {
    constructor(gltf, json, nodes, parts) {
        this.scene = gltf.scene || new THREE.Group();
        this.json = json;
        this.nodes = nodes;  // by the actor's numbers, and behind them those that glTF needs
        this.parts = parts;
        const clip = (gltf.animations || [])[0];
        this.action = null;
        if (clip) {
            this.mixer = new THREE.AnimationMixer(this.scene);
            this.action = this.mixer.clipAction(clip);
            this.action.play();
        }
    }

    // Shows the pose of that time; without motion, that of rest.
    setTime(seconds) {
        if (this.action) {
            this.action.time = seconds;
            this.mixer.update(0);
        }
        this.scene.updateMatrixWorld(true);
        this.parts.forEach(part => part.deform(this.nodes));
    }

    partsOf(actorNode) { return this.parts.filter(part => part.actorNode === actorNode); }

    static async load(buffer) {
        const { json, rest } = glbChunks(buffer);
        const gltf = await new Promise((resolve, reject) =>
            new THREE.GLTFLoader().parse(plainGlb(json, rest), '', resolve, reject));
        const parser = gltf.parser;
        const nodes = await Promise.all((json.nodes || []).map((_, i) =>
            parser.getDependency('node', i)));
        const array = async number => (await parser.getDependency('accessor', number)).array;
        const parts = [];
        for (let i = 0; i < nodes.length; ++i) {
            const node = json.nodes[i];
            if (node.mesh === undefined) continue;
            const mesh = json.meshes[node.mesh];
            for (let p = 0; p < mesh.primitives.length; ++p) {
                const primitive = mesh.primitives[p];
                const object = mesh.primitives.length === 1 ? nodes[i] : nodes[i].children[p];
                const materialJson = (json.materials || [])[primitive.material] || {};
                const part = new Part(object, (mesh.extras || {}).node,
                                      (materialJson.extras || { material: -1 }).material);
                placeTexture(object.material, materialJson);
                if (node.skin !== undefined) {
                    const skin = json.skins[node.skin];
                    part.takeSkin(skin.joints, await array(skin.inverseBindMatrices));
                }
                for (const target of primitive.targets || []) {
                    part.targets.push(await array(target.POSITION));
                    part.weights.push(0);
                }
                parts.push(part);
            }
        }
        return new Model(gltf, json, nodes, parts);
    }
}
