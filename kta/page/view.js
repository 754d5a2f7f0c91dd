'use strict';
// What is seen: the canvas with the model, and what is selected in it.

const kHighlight = 0xff9020;

// The legend's colours, from 0 on the left to 1 on the right.
function heatTexture() {
    const strip = Object.assign(document.createElement('canvas'), { width: 256, height: 1 });
    const pen = strip.getContext('2d');
    const slope = pen.createLinearGradient(0, 0, 256, 0);
    ['#1f3a93', '#19b5d6', '#3fc155', '#f5d33f', '#e23b2e'].forEach((colour, i) =>
        slope.addColorStop(i / 4, colour));
    pen.fillStyle = slope;
    pen.fillRect(0, 0, 256, 1);
    const texture = new THREE.CanvasTexture(strip);
    texture.encoding = THREE.sRGBEncoding;
    texture.generateMipmaps = false;
    texture.minFilter = THREE.LinearFilter;
    return texture;
}

// Of length 1: red, green and blue along 3ds Max's X, Y and Z, which are x, -z and y here.
function axesMarker() {
    const geometry = new THREE.BufferGeometry();
    const floats = numbers => new THREE.BufferAttribute(new Float32Array(numbers), 3);
    geometry.setAttribute('position', floats([0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1, 0]));
    geometry.setAttribute('color', floats([1, 0.1, 0.1, 1, 0.1, 0.1, 0.1, 0.8, 0.1, 0.1, 0.8, 0.1,
                                           0.2, 0.4, 1, 0.2, 0.4, 1]));
    return new THREE.LineSegments(geometry, new THREE.LineBasicMaterial(
        { vertexColors: THREE.VertexColors, depthTest: false, transparent: true }));
}

class View {
    constructor(canvas, label) {
        this.canvas = canvas;
        this.label = label;
        this.renderer = new THREE.WebGLRenderer(
            { canvas: canvas, antialias: true, preserveDrawingBuffer: true });
        this.renderer.gammaOutput = true;
        this.renderer.setClearColor(0x585e66);
        this.camera = new THREE.PerspectiveCamera(35, 1, 0.1, 1000);
        this.scene = new THREE.Scene();
        this.scene.add(this.camera, new THREE.HemisphereLight(0xffffff, 0x9098a8, 0.62));
        const lamp = new THREE.DirectionalLight(0xffffff, 0.55);
        lamp.position.set(-0.48, 0.64, 0.6);  // from the viewer's upper left
        this.camera.add(lamp, lamp.target);
        this.controls = new THREE.OrbitControls(this.camera, canvas);
        this.controls.addEventListener('change', () => this.draw());
        this.heat = heatTexture();
        this.marker = axesMarker();
        this.marker.visible = false;
        this.overlay = new THREE.Group();
        this.overlay.add(this.marker);
        this.scene.add(this.overlay);
        this.selection = { kind: 'none' };
        this.model = null;
        new ResizeObserver(() => this.resize()).observe(canvas.parentElement);
    }

    show(model, bones) {
        this.model = model;
        this.scene.add(model.scene);
        this.addSkeleton(bones);
        model.setTime(0);
        this.resize();
        this.lookFrom(35, 25);
    }

    // Lines from bones to the nearest bones above them: [node, bone above, or -1].
    addSkeleton(bones) {
        this.bones = bones;
        const geometry = new THREE.BufferGeometry();
        geometry.setAttribute('position',
                              new THREE.BufferAttribute(new Float32Array(6 * bones.length), 3));
        const looks = { color: 0xf5d060, depthTest: false, transparent: true };
        this.boneLines = new THREE.LineSegments(geometry, new THREE.LineBasicMaterial(looks));
        const dots = new THREE.Points(geometry, new THREE.PointsMaterial(
            Object.assign({ size: 5, sizeAttenuation: false }, looks)));
        this.skeleton = new THREE.Group();
        this.skeleton.add(this.boneLines, dots);
        this.withBones = false;
        [this.boneLines, dots, this.marker].forEach(object => {
            object.frustumCulled = false;
            object.renderOrder = 2;
        });
        this.overlay.add(this.skeleton);
    }

    placeSkeleton() {
        const positions = this.boneLines.geometry.attributes.position;
        const at = new THREE.Vector3();
        this.bones.forEach(([bone, above], i) => {
            at.setFromMatrixPosition(this.model.nodes[bone].matrixWorld);
            positions.setXYZ(2 * i, at.x, at.y, at.z);
            if (above >= 0) at.setFromMatrixPosition(this.model.nodes[above].matrixWorld);
            positions.setXYZ(2 * i + 1, at.x, at.y, at.z);
        });
        positions.needsUpdate = true;
    }

    bounds() {
        const box = new THREE.Box3();
        const point = new THREE.Vector3();
        this.model.parts.forEach(part => {
            const positions = part.object.geometry.attributes.position;
            for (let i = 0; i < positions.count; ++i) {
                point.fromBufferAttribute(positions, i).applyMatrix4(part.object.matrixWorld);
                box.expandByPoint(point);
            }
        });
        this.bones.forEach(([bone]) =>
            box.expandByPoint(point.setFromMatrixPosition(this.model.nodes[bone].matrixWorld)));
        if (box.isEmpty()) box.set(new THREE.Vector3(-1, -1, -1), new THREE.Vector3(1, 1, 1));
        return box;
    }

    // Degrees as `kta preview` counts them: 0, 0 in front, 90, 0 on the right.
    lookFrom(azimuth, elevation) {
        const box = this.bounds();
        const centre = box.getCenter(new THREE.Vector3());
        const radius = Math.max(box.getSize(new THREE.Vector3()).length() / 2, 1e-6);
        const a = azimuth * Math.PI / 180, e = elevation * Math.PI / 180;
        const fit = Math.min(1, this.camera.aspect) * Math.tan(this.camera.fov * Math.PI / 360);
        const distance = radius * 1.05 / Math.sin(Math.atan(fit));
        this.camera.position.set(Math.sin(a) * Math.cos(e), Math.sin(e), Math.cos(a) * Math.cos(e))
            .multiplyScalar(distance).add(centre);
        this.camera.near = distance / 1000;
        this.camera.far = distance * 20;
        this.camera.updateProjectionMatrix();
        this.controls.target.copy(centre);
        this.marker.scale.setScalar(radius * 0.15);
        this.controls.update();
        this.draw();
    }

    resize() {
        const { clientWidth, clientHeight } = this.canvas.parentElement;
        if (!clientWidth || !clientHeight) return;
        this.renderer.setPixelRatio(Math.min(window.devicePixelRatio, 2));
        this.renderer.setSize(clientWidth, clientHeight, false);
        this.camera.aspect = clientWidth / clientHeight;
        this.camera.updateProjectionMatrix();
        this.draw();
    }

    setTime(seconds) {
        this.model.setTime(seconds);
        this.draw();
    }

    draw() {
        if (!this.model) return;
        const node = this.selection.node;
        this.skeleton.visible = this.withBones || this.bones.some(([bone]) => bone === node);
        this.placeSkeleton();
        this.placeMarker();
        this.renderer.render(this.scene, this.camera);
    }

    setWire(on) {
        this.wire = on;
        this.select(this.selection);
    }

    setBones(on) {
        this.withBones = on;
        this.draw();
    }

    // {kind: 'none'}, {kind: 'node', node}, {kind: 'material', material} or
    // {kind: 'weights', mesh, node}, where `mesh` is the node of the skinned mesh.
    select(selection) {
        this.selection = selection;
        this.model.parts.forEach(part => {
            part.restoreCoordinates();
            part.object.material = this.materialFor(part, selection);
        });
        this.draw();
    }

    materialFor(part, selection) {
        if (selection.kind === 'weights' && part.skin && part.actorNode === selection.mesh) {
            return this.heatMaterial(part, selection.node);
        }
        const isMeant = selection.kind === 'node' && part.actorNode === selection.node ||
            selection.kind === 'material' && part.material === selection.material;
        const isOther = selection.kind === 'material' || selection.kind === 'weights';
        if (!isMeant && !isOther && !this.wire) return part.look;
        const material = part.look.clone();
        material.wireframe = Boolean(this.wire);
        if (isMeant) {
            material.emissive = new THREE.Color(kHighlight);
            material.emissiveIntensity = 0.45;
        } else if (isOther) {
            material.transparent = true;
            material.opacity = 0.18;
            material.depthWrite = false;
        }
        return material;
    }

    // Shares stand in the place of texture coordinates, so that colours between vertices are those
    // of the shares between theirs.
    heatMaterial(part, node) {
        const shares = part.weightsOf(node);
        const places = new Float32Array(2 * shares.length);
        shares.forEach((share, i) => places.set([(0.5 + 255 * share) / 256, 0.5], 2 * i));
        part.object.geometry.setAttribute('uv', new THREE.BufferAttribute(places, 2));
        return new THREE.MeshLambertMaterial({ map: this.heat, side: THREE.DoubleSide,
                                               wireframe: Boolean(this.wire) });
    }

    placeMarker() {
        const node = this.selection.node;
        const object = node === undefined ? null : this.model.nodes[node];
        this.marker.visible = Boolean(object);
        this.label.hidden = !object;
        if (!object) return;
        const scale = new THREE.Vector3();
        object.matrixWorld.decompose(this.marker.position, this.marker.quaternion, scale);
        const place = this.marker.position.clone().project(this.camera);
        const { clientWidth, clientHeight } = this.canvas.parentElement;
        this.label.style.left = (place.x + 1) / 2 * clientWidth + 8 + 'px';
        this.label.style.top = (1 - place.y) / 2 * clientHeight + 8 + 'px';
    }

    // The part that is seen at a place of the window.
    partAt(x, y) {
        const frame = this.canvas.getBoundingClientRect();
        const ray = new THREE.Raycaster();
        ray.setFromCamera({ x: (x - frame.left) / frame.width * 2 - 1,
                            y: 1 - (y - frame.top) / frame.height * 2 }, this.camera);
        const hits = ray.intersectObjects(this.model.parts.map(part => part.object));
        return hits.length ? this.model.parts.find(part => part.object === hits[0].object)
                           : undefined;
    }
}
