'use strict';
// Two models laid over each other: what differs is blue as it is in the first file and orange as it
// is in the second; what is equal is seen once, in grey.

const kTints = [0x3d86f0, 0xf08c28];
const kEqualTint = 0xb4b9c0;

// Both models as the view takes one.
class BothModels {
    constructor(first, second) {
        this.sides = [first, second];
        this.sides.forEach((model, side) => model.parts.forEach(part => { part.side = side; }));
        this.scene = new THREE.Group();
        this.scene.add(first.scene, second.scene);
        this.nodes = first.nodes.concat(second.nodes);
        this.parts = first.parts.concat(second.parts);
    }

    setTime(seconds) { this.sides.forEach(model => model.setTime(seconds)); }

    // Where a node of one side is; null where there is none.
    placeOf(side, node) {
        const object = this.sides[side].nodes[node];
        return object ? new THREE.Vector3().setFromMatrixPosition(object.matrixWorld) : null;
    }

    // A position of a mesh as the files have it (x, z, y), where the view has it.
    pointOf(side, node, position) {
        const parts = this.sides[side].partsOf(node);
        if (!parts.length || !position.every(Number.isFinite)) return null;
        return new THREE.Vector3(position[0], position[1], -position[2])
            .applyMatrix4(parts[0].object.matrixWorld);
    }
}

class OverlayView extends View {
    // `changed`: for each side the numbers of the nodes that look different.
    constructor(canvas, label, changed) {
        super(canvas, label);
        this.changed = changed;
        this.shown = [true, true];
        this.blend = 0.5;
        this.withEqual = true;
        this.selection = { nodes: [], materials: [], places: [] };
        this.way = new THREE.Line(new THREE.BufferGeometry(), new THREE.LineBasicMaterial(
            { color: 0xffffff, depthTest: false, transparent: true }));
        this.way.renderOrder = 2;
        this.way.frustumCulled = false;
        this.way.visible = false;
        this.overlay.add(this.way);
    }

    isChanged(part) { return this.changed[part.side].has(part.actorNode); }

    // How much of a part is seen, from 0 to 1.
    shareOf(part) {
        if (!this.isChanged(part)) {
            return this.withEqual && part.side === (this.shown[0] || !this.shown[1] ? 0 : 1) ? 1 : 0;
        }
        if (!this.shown[part.side]) return 0;
        if (!this.shown[1 - part.side]) return 1;
        return part.side === 0 ? 1 - this.blend : this.blend;
    }

    // {nodes, materials, places}: of each side the numbers and the place that a difference is about.
    select(selection) {
        this.selection = selection;
        this.model.parts.forEach(part => {
            part.object.material = this.tinted(part, selection);
        });
        this.draw();
    }

    isMeant(part, selection) {
        return selection.nodes[part.side] === part.actorNode ||
            selection.materials[part.side] === part.material;
    }

    tinted(part, selection) {
        const isMeant = this.isMeant(part, selection);
        const isAnyMeant = this.model.parts.some(each => this.isMeant(each, selection));
        const share = this.shareOf(part) * (isAnyMeant && !isMeant ? 0.25 : 1);
        const tint = this.isChanged(part) ? kTints[part.side] : kEqualTint;
        return new THREE.MeshPhongMaterial({
            color: tint, emissive: tint, emissiveIntensity: isMeant ? 0.35 : 0, shininess: 5,
            opacity: share, transparent: share < 1, depthWrite: share === 1, visible: share > 0,
            side: THREE.DoubleSide, wireframe: Boolean(this.wire)
        });
    }

    refresh() { this.select(this.selection); }

    // Marks the place in the second file, or in the first where it is gone, and the way there.
    placeMarker() {
        const [from, to] = this.selection.places;
        const place = to || from;
        this.marker.visible = Boolean(place);
        this.label.hidden = !place;
        this.way.visible = Boolean(from && to);
        if (this.way.visible) this.way.geometry.setFromPoints([from, to]);
        if (!place) return;
        this.marker.position.copy(place);
        const seen = place.clone().project(this.camera);
        const { clientWidth, clientHeight } = this.canvas.parentElement;
        this.label.style.left = (seen.x + 1) / 2 * clientWidth + 8 + 'px';
        this.label.style.top = (1 - seen.y) / 2 * clientHeight + 8 + 'px';
    }
}

// The nodes whose meshes look different, or stand elsewhere, for each side.
function changedNodes(changes) {
    const sets = [new Set(), new Set()];
    const kinds = ['node', 'mesh', 'skinning weights', 'morph'];
    changes.filter(change => kinds.includes(change.kind) && change.change !== 'moved')
        .forEach(change => [change.inA, change.inB].forEach((place, side) => {
            if (place && place.node !== undefined) sets[side].add(place.node);
        }));
    return sets;
}

const kIdentity = ['node', 'material', 'layer', 'texture', 'channel', 'track', 'startJoint',
                   'endJoint', 'firstNode', 'firstVariable', 'secondNode', 'secondVariable'];

function titleOf(change) {
    const names = kIdentity.filter(label => change[label] !== undefined)
        .map(label => change[label] === null ? '(none)' : String(change[label]));
    return (names[0] || '(without name)') + names.slice(1).map(name => ', ' + name).join('') +
        (change.ordinal > 1 ? ' (' + change.ordinal + ')' : '');
}

// A difference of a chunk as [what, text].
function fieldRow(field) {
    const prefix = field.subMesh === undefined ? '' : field.subMesh + ': ';
    const some = field.item === undefined ? '' : field.count + ' of ' + field.compared + ' (' +
        field.item + ') ';
    if (field.change !== 'changed') return [prefix + (field.field || field.item), some + field.change];
    const at = Object.entries(field.at || {}).map(([name, value]) => name + ' ' + value).join(', ');
    const by = field.deviation === undefined ? '' : ', by ' + field.deviation;
    const turned = field.degrees === undefined ? '' : ', turned by ' + field.degrees + ' degrees';
    return [prefix + field.field, some + (at ? 'most at ' + at + ': ' : '') +
            JSON.stringify(field.a) + ' \u2192 ' + JSON.stringify(field.b) + by + turned];
}

// The lists of differences, one for each kind of chunk.
class Differences {
    constructor(diff) {
        this.diff = diff;
        this.view = null;  // where there is no WebGL
    }

    all() {
        const kinds = [...new Set(this.diff.changes.map(change => change.kind))];
        const lists = kinds.map(kind => [kind, this.diff.changes.map((change, number) =>
            this.item(change, number)).filter((_, i) => this.diff.changes[i].kind === kind)]);
        return lists.length ? lists : [['Differences', []]];
    }

    item(change, number) {
        const title = titleOf(change);
        return {
            key: 'difference ' + number, text: title, note: change.change, depth: 0,
            className: change.change,
            show: () => {
                if (this.view) {
                    byId('label').textContent = title;
                    this.view.select(this.selectionOf(change));
                }
                return [element('h2', { textContent: title }),
                        table([['Kind', change.kind], ['Change', change.change]].concat(
                            (change.fields || []).map(fieldRow)))];
            }
        };
    }

    selectionOf(change) {
        const sides = [change.inA || {}, change.inB || {}];
        const position = (change.fields || []).find(field => field.field === 'position' && field.at);
        const places = sides.map((place, side) => place.node === undefined ? null
            : position && change.kind === 'mesh'
                ? this.view.model.pointOf(side, place.node, side === 0 ? position.a : position.b)
                : this.view.model.placeOf(side, place.node));
        return { nodes: sides.map(place => place.node === undefined ? null : place.node),
                 materials: sides.map(place => place.material === undefined ? null
                                                                            : place.material),
                 places: places };
    }
}

// A click on what differs chooses its first difference.
function pickDifference(view, panel, diff) {
    onClick(view.canvas, event => {
        const part = view.partAt(event.clientX, event.clientY);
        const number = part ? diff.changes.findIndex(change => {
            const place = part.side === 0 ? change.inA : change.inB;
            return place && place.node === part.actorNode;
        }) : -1;
        if (number >= 0) panel.chooseKey('difference ' + number);
    });
}

function connectOverlay(view) {
    [['first', 0], ['second', 1]].forEach(([id, side]) => toggle(byId(id), on => {
        view.shown[side] = on;
        view.refresh();
    }));
    toggle(byId('equal'), on => {
        view.withEqual = on;
        view.refresh();
    });
    toggle(byId('wire'), on => view.setWire(on));
    byId('blend').addEventListener('input', () => {
        view.blend = Number(byId('blend').value);
        view.refresh();
    });
}

async function startOverlay() {
    const diff = JSON.parse(byId('diff-json').textContent);
    byId('name').textContent = 'A: ' + diff.a + ', B: ' + diff.b;
    byId('counts').textContent = ['added', 'removed', 'changed', 'moved', 'equal']
        .map(what => diff.totals[what] + ' ' + what).join(', ');
    byId('licence').addEventListener('click', () => byId('licence-text').showModal());
    const differences = new Differences(diff);
    const panel = new Panel(differences.all(), { tabs: byId('tabs'), filter: byId('filter'),
                                                 list: byId('list'), details: byId('details') });
    try {
        const models = await Promise.all(['first-glb', 'second-glb'].map(id =>
            Model.load(bytesOf(id))));
        const view = new OverlayView(byId('view'), byId('label'), changedNodes(diff.changes));
        view.show(new BothModels(...models), []);
        view.refresh();
        connectLooks(view);
        connectOverlay(view);
        pickDifference(view, panel, diff);
        differences.view = view;
    } catch (error) {
        byId('trouble').hidden = false;
        byId('trouble').textContent = 'The models cannot be shown: ' + error.message;
    }
    document.body.dataset.ready = 'true';
}

startOverlay();
