'use strict';
// Puts the page together.

// The time, and what shows it.
class Timeline {
    constructor(times, show) {
        [this.first, this.last] = times;
        this.show = show;
        this.time = this.first;
        this.isPlaying = false;
        const slider = byId('time');
        slider.min = this.first;
        slider.max = this.last;
        slider.addEventListener('input', () => {
            this.play(false);
            this.setTime(Number(slider.value));
        });
        byId('play').addEventListener('click', () => this.play(!this.isPlaying));
        byId('timeline').hidden = !(this.last > this.first);
    }

    setTime(seconds) {
        this.time = Math.max(this.first, Math.min(this.last, seconds));
        byId('time').value = this.time;
        byId('clock').textContent = this.time.toFixed(2) + ' / ' + this.last.toFixed(2) + ' s';
        this.show(this.time);
    }

    play(on) {
        if (on === this.isPlaying) return;
        this.isPlaying = on;
        byId('play').setAttribute('aria-pressed', String(on));
        byId('play').textContent = on ? 'Pause' : 'Play';
        if (on) requestAnimationFrame(now => this.step(now, now));
    }

    step(now, before) {
        if (!this.isPlaying) return;
        const time = this.time + (now - before) / 1000;
        this.setTime(time > this.last ? this.first : time);
        requestAnimationFrame(next => this.step(next, now));
    }
}

// What the lists do to the view.
class Stage {
    constructor() {
        this.view = null;  // where there is no WebGL
        this.plot = null;
        this.timeline = null;
    }

    select(selection, label) {
        this.plot = null;
        byId('label').textContent = label || '';
        byId('legend').hidden = selection.kind !== 'weights';
        if (this.view) this.view.select(selection);
    }

    setTime(seconds) { this.timeline.setTime(seconds); }

    setPlot(plot) {
        this.plot = plot;
        plot.time = this.timeline.time;
    }

    show(seconds) {
        if (this.view) this.view.setTime(seconds);
        if (this.plot) {
            this.plot.time = seconds;
            this.plot.draw();
        }
    }

    partsOf(morph) {
        return this.view ? this.view.model.partsOf(morph.node)
            .filter(part => morph.target < part.targets.length) : [];
    }

    morphOf(morph) {
        const parts = this.partsOf(morph);
        return parts.length ? parts[0].weights[morph.target] : 0;
    }

    setMorph(morph, weight) {
        this.partsOf(morph).forEach(part => { part.weights[morph.target] = weight; });
        this.show(this.timeline.time);
    }
}

// A click that does not turn the model chooses the node under it.
function pickOnClick(view, panel) {
    onClick(view.canvas, event => {
        const part = view.partAt(event.clientX, event.clientY);
        if (part && part.actorNode !== undefined) panel.chooseKey('node ' + part.actorNode);
    });
}

function connectButtons(view) {
    connectLooks(view);
    toggle(byId('bones'), on => view.setBones(on));
    toggle(byId('wire'), on => view.setWire(on));
    if (!view.model.parts.length) byId('bones').click();
}

function bonesOf(details) {
    const bones = [];
    details.nodes.forEach((node, i) => {
        if (!node.isBone) return;
        bones.push([i, node.boneAbove === null ? -1 : node.boneAbove]);
    });
    return bones;
}

async function showModel(details, stage, panel, bytes) {
    const model = await Model.load(bytes);
    const view = new View(byId('view'), byId('label'));
    view.show(model, bonesOf(details));
    stage.view = view;
    connectButtons(view);
    pickOnClick(view, panel);
}

async function start() {
    const details = JSON.parse(byId('details-json').textContent);
    byId('name').textContent = details.title;
    byId('counts').textContent = details.counts;
    const bytes = bytesOf('glb-base64');
    byId('download').href = URL.createObjectURL(new Blob([bytes], { type: 'model/gltf-binary' }));
    byId('licence').addEventListener('click', () => byId('licence-text').showModal());
    const stage = new Stage();
    stage.timeline = new Timeline(details.times, seconds => stage.show(seconds));
    const panel = new Panel(new Lists(details, stage).all(),
                            { tabs: byId('tabs'), filter: byId('filter'), list: byId('list'),
                              details: byId('details') });
    try {
        await showModel(details, stage, panel, bytes);
        stage.setTime(details.times[0]);
    } catch (error) {
        byId('trouble').hidden = false;
        byId('trouble').textContent = 'The model cannot be shown: ' + error.message;
    }
    document.body.dataset.ready = 'true';
}

start();
