'use strict';
// What every page does with its elements.

const byId = id => document.getElementById(id);

// The bytes that an element holds as base64.
function bytesOf(id) {
    const text = atob(byId(id).textContent.trim());
    const bytes = new Uint8Array(text.length);
    for (let i = 0; i < text.length; ++i) bytes[i] = text.charCodeAt(i);
    return bytes.buffer;
}

function toggle(button, act) {
    button.addEventListener('click', () => {
        const on = button.getAttribute('aria-pressed') !== 'true';
        button.setAttribute('aria-pressed', String(on));
        act(on);
    });
}

// Clicks, but not the ends of drags.
function onClick(canvas, act) {
    let start = null;
    canvas.addEventListener('pointerdown', event => {
        start = { x: event.clientX, y: event.clientY };
    });
    canvas.addEventListener('pointerup', event => {
        if (start && Math.hypot(event.clientX - start.x, event.clientY - start.y) <= 5) act(event);
    });
}

function connectLooks(view) {
    byId('fit').addEventListener('click', () => view.lookFrom(35, 25));
    byId('front').addEventListener('click', () => view.lookFrom(0, 0));
    byId('side').addEventListener('click', () => view.lookFrom(90, 0));
    byId('top').addEventListener('click', () => view.lookFrom(0, 89.99));
}
