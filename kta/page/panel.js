'use strict';
// The lists beside the canvas. All texts from files get into the page as text, never as markup.

function element(tag, properties, ...children) {
    const made = Object.assign(document.createElement(tag), properties);
    made.append(...children);
    return made;
}

function numbers(list) {
    return list.map(shortNumber).join(', ');
}

// Rows of [name, value], where values are texts or elements; those without value are left out.
function table(rows) {
    const body = element('table');
    rows.filter(([, value]) => value !== undefined && value !== '').forEach(([name, value]) =>
        body.append(element('tr', {}, element('th', { textContent: name }),
                            element('td', {}, value))));
    return body;
}

function swatch(colour) {
    const css = 'rgb(' + colour.map(c => Math.round(255 * Math.max(0, Math.min(1, c)))) + ')';
    const square = element('span', { className: 'swatch' });
    square.style.background = css;
    return element('span', {}, square, numbers(colour));
}

const kTrackNames = { P: 'position', R: 'rotation', r: 'rotation', S: 'scale' };

// What each tab lists: items with a text, a depth, and what a click on them shows.
class Lists {
    constructor(details, stage) {
        this.details = details;
        this.stage = stage;  // {select(selection), setTime(seconds), setMorph(...)}
    }

    nameOf(node) {
        const known = this.details.nodes[node];
        return known ? known.name || '(without name)' : '(no node)';
    }

    all() {
        const lists = [['Nodes', this.nodes()], ['Materials', this.materials()],
                       ['Weights', this.weights()], ['Morphs', this.morphs()],
                       ['Tracks', this.tracks()], ['Issues', this.issues()]];
        return lists.filter(([name, items]) => items.length || name === 'Issues');
    }

    nodes() {
        const children = new Map();
        this.details.nodes.forEach((node, i) => {
            const parent = node.parent === null ? -1 : node.parent;
            children.set(parent, (children.get(parent) || []).concat(i));
        });
        const items = [];
        const waiting = (children.get(-1) || []).reverse().map(node => [node, 0]);
        while (waiting.length) {
            const [node, depth] = waiting.pop();
            items.push(this.nodeItem(node, depth));
            (children.get(node) || []).slice().reverse().forEach(child =>
                waiting.push([child, depth + 1]));
        }
        return items;
    }

    nodeItem(number, depth) {
        const node = this.details.nodes[number];
        const kinds = [node.isBone ? 'bone' : '', node.triangles ? 'mesh' : ''].filter(Boolean);
        return {
            key: 'node ' + number, text: this.nameOf(number), note: kinds.join(', '), depth: depth,
            show: () => {
                this.stage.select({ kind: 'node', node: number }, this.nameOf(number));
                return [element('h2', { textContent: this.nameOf(number) }), table([
                    ['Number', String(number)],
                    ['Parent', node.parent === null ? node.parentName : this.nameOf(node.parent)],
                    ['Kind', kinds.join(', ')],
                    ['Triangles', node.triangles ? String(node.triangles) : ''],
                    ['Vertices', node.vertices ? String(node.vertices) : ''],
                    ['Position', numbers(node.translation)], ['Rotation', numbers(node.rotation)],
                    ['Scale', numbers(node.scale)],
                    ['Helper size', node.helperSize === null ? '' : shortNumber(node.helperSize)]
                ])];
            }
        };
    }

    materials() {
        return this.details.materials.map((material, number) => ({
            key: 'material ' + number, text: material.name || '(without name)', depth: 0,
            note: material.layers.length ? 'textured' : '',
            show: () => {
                this.stage.select({ kind: 'material', material: number });
                return [element('h2', { textContent: material.name || '(without name)' }), table([
                    ['Number', String(number)], ['Diffuse', swatch(material.diffuse)],
                    ['Ambient', swatch(material.ambient)], ['Specular', swatch(material.specular)],
                    ['Self-illumination', swatch(material.selfIllumination)],
                    ['Shininess', numbers([material.shininess, material.shininessStrength])],
                    ['Opacity', shortNumber(material.opacity)],
                    ['Two-sided', material.twoSided ? 'yes' : ''],
                    ['Wire', material.wire ? 'yes' : '']
                ].concat(material.layers.map(layer => [
                    layer.type, layer.file + (layer.found === false ? ' (not found)' : '') +
                        (layer.amount === 1 ? '' : ', amount ' + shortNumber(layer.amount))
                ])))];
            }
        }));
    }

    weights() {
        return [].concat(...this.details.skins.map(skin => skin.bones.map(bone => ({
            key: 'weights ' + skin.node + ' ' + bone.node, depth: 0,
            text: this.nameOf(bone.node),
            note: (this.details.skins.length > 1 ? 'on ' + this.nameOf(skin.node) + ', ' : '') +
                bone.vertices + (bone.vertices === 1 ? ' vertex' : ' vertices'),
            show: () => {
                this.stage.select({ kind: 'weights', mesh: skin.node, node: bone.node },
                                  this.nameOf(bone.node));
                return [element('h2', { textContent: this.nameOf(bone.node) }), table([
                    ['Moves', this.nameOf(skin.node)],
                    ['Vertices', bone.vertices + ' of ' + skin.vertices],
                    ['Greatest weight', shortNumber(bone.greatest)],
                    ['Sum of weights', shortNumber(bone.sum)]
                ])];
            }
        }))));
    }

    morphs() {
        return this.details.morphs.map((morph, number) => ({
            key: 'morph ' + number, text: morph.channel || '(without name)', depth: 0,
            note: 'of ' + this.nameOf(morph.node),
            show: () => {
                this.stage.select({ kind: 'none' });
                const slider = element('input', { type: 'range', min: 0, max: 100, step: 'any',
                                                  value: 100 * this.stage.morphOf(morph) });
                slider.addEventListener('input', () =>
                    this.stage.setMorph(morph, slider.value / 100));
                return [element('h2', { textContent: morph.channel }), table([
                    ['Node', this.nameOf(morph.node)], ['Points', String(morph.points)],
                    ['Weight', slider]
                ])];
            }
        }));
    }

    tracks() {
        return this.details.tracks.map((track, number) => ({
            key: 'track ' + number, text: track.name + ' ' + kTrackNames[track.letter], depth: 0,
            note: track.keys + (track.keys === 1 ? ' key' : ' keys') +
                (track.keyframed ? ', keyframed' : ', sampled'),
            show: () => {
                this.stage.select(track.node === null ? { kind: 'none' }
                                                      : { kind: 'node', node: track.node },
                                  track.name);
                const plot = new Plot(track, this.details.times, time => this.stage.setTime(time));
                this.stage.setPlot(plot);
                const axes = element('p', { style: 'margin: 0' });
                track.curves.forEach((curve, i) => {
                    const name = element('b', { textContent: curve.axis + ' ' });
                    name.style.color = kAxisColours[i];
                    axes.append(name);
                });
                return [element('h2', { textContent: track.name + ' ' +
                                        kTrackNames[track.letter] }), axes, plot.canvas];
            }
        }));
    }

    issues() {
        return this.details.issues.map((issue, number) => ({
            key: 'issue ' + number, className: issue.severity, depth: 0, note: issue.code,
            text: (issue.subject ? issue.subject + ': ' : '') + issue.text,
            show: () => {
                this.stage.select(issue.node !== null ? { kind: 'node', node: issue.node }
                    : issue.material !== null ? { kind: 'material', material: issue.material }
                    : { kind: 'none' }, issue.node !== null ? this.nameOf(issue.node) : '');
                return [element('h2', { textContent: issue.severity + ': ' + issue.code }), table([
                    ['What', issue.text], ['Of', issue.subject],
                    ['Meaning', issue.meaning], ['Remedy', issue.remedy],
                    ['File', issue.file], ['Where', issue.where],
                    ['Offset', String(issue.offset)],
                    ['Alike', issue.count > 1 ? issue.count + ' in all' : '']
                ])];
            }
        }));
    }
}

const kMostShown = 2000;  // items of a list; a filter finds the others

// The tabs, the list of the chosen one, and the details of the chosen item.
class Panel {
    constructor(lists, parts) {
        this.parts = parts;  // elements: tabs, filter, list, details
        this.lists = lists;
        this.current = null;
        this.tabs = lists.map(([name, items]) => {
            const tab = element('button', { role: 'tab', textContent:
                name === 'Issues' ? name + ' (' + items.length + ')' : name });
            tab.id = 'tab-' + name.toLowerCase();
            tab.addEventListener('click', () => this.open(name));
            parts.tabs.append(tab);
            return tab;
        });
        parts.filter.addEventListener('input', () => this.fill());
        this.open(lists[0][0]);
    }

    open(name) {
        this.name = name;
        this.tabs.forEach((tab, i) =>
            tab.setAttribute('aria-selected', String(this.lists[i][0] === name)));
        this.parts.filter.value = '';
        this.fill();
    }

    fill() {
        const [, items] = this.lists.find(([name]) => name === this.name);
        const wanted = this.parts.filter.value.toLowerCase();
        const found = items.filter(item =>
            (item.text + ' ' + item.note).toLowerCase().includes(wanted));
        this.parts.list.replaceChildren(...found.slice(0, kMostShown).map(item =>
            this.button(item)));
        const rest = found.length - kMostShown;
        if (rest > 0 || !found.length) {
            this.parts.list.append(element('p', { textContent: rest > 0
                ? 'and ' + rest + ' more; the filter finds them'
                : items.length ? 'nothing of that name' : 'Nothing wrong was found.' }));
        }
    }

    button(item) {
        const made = element('button', { className: item.className || '' }, item.text + ' ',
                             element('small', { textContent: item.note }));
        made.style.paddingLeft = 8 + 14 * Math.min(item.depth, 12) + 'px';
        made.dataset.key = item.key;
        made.setAttribute('aria-current', String(item.key === this.current));
        made.addEventListener('click', () => this.choose(item));
        return made;
    }

    choose(item) {
        this.current = item.key;
        const buttons = [...this.parts.list.querySelectorAll('button')];
        buttons.forEach(button =>
            button.setAttribute('aria-current', String(button.dataset.key === item.key)));
        this.parts.details.hidden = false;
        this.parts.details.replaceChildren(...item.show());
        const chosen = buttons.find(button => button.dataset.key === item.key);
        if (chosen) chosen.scrollIntoView({ block: 'nearest' });
    }

    // Opens the tab that has the item, and shows it.
    chooseKey(key) {
        const list = this.lists.find(([, items]) => items.some(item => item.key === key));
        if (!list) return;
        if (this.name !== list[0]) this.open(list[0]);
        this.choose(list[1].find(item => item.key === key));
    }
}
