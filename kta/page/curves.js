'use strict';
// Plots of key tracks.

const kAxisColours = ['#ff6257', '#63d471', '#6fa8ff', '#d9d9d9'];

// A value in few digits; files hold such that are no numbers, which come as null.
function shortNumber(value) {
    return value === null ? 'no number' : Number(value.toPrecision(4)).toString();
}

// A canvas that shows a track's curves with the current time; a click or drag on it calls
// `setTime(seconds)`.
class Plot {
    constructor(track, range, setTime) {
        this.track = track;
        this.range = range;  // [first, last] time
        this.time = range[0];
        this.canvas = document.createElement('canvas');
        const drag = event => {
            if (event.buttons || event.type === 'pointerdown') setTime(this.timeAt(event));
        };
        this.canvas.addEventListener('pointerdown', drag);
        this.canvas.addEventListener('pointermove', drag);
        new ResizeObserver(() => this.draw()).observe(this.canvas);
    }

    timeAt(event) {
        const frame = this.canvas.getBoundingClientRect();
        const share = (event.clientX - frame.left - this.left) / (this.right - this.left);
        const [first, last] = this.range;
        return first + Math.max(0, Math.min(1, share)) * (last - first);
    }

    x(time) {
        const [first, last] = this.range;
        return this.left + (last > first ? (time - first) / (last - first) : 0.5) *
            (this.right - this.left);
    }

    y(value) {
        const share = (value - this.low) / (this.high - this.low);
        return this.bottom - share * (this.bottom - this.top);
    }

    measure(width, height) {
        let low = Infinity, high = -Infinity;
        this.track.curves.forEach(curve => curve.points.forEach(([, value]) => {
            if (value === null) return;
            low = Math.min(low, value);
            high = Math.max(high, value);
        }));
        if (!(low <= high)) low = high = 0;
        const margin = high > low ? (high - low) * 0.05 : Math.max(Math.abs(low) * 0.1, 1);
        Object.assign(this, { low: low - margin, high: high + margin, left: 48, right: width - 8,
                              top: 8, bottom: height - 20 });
    }

    draw() {
        const { clientWidth: width, clientHeight: height } = this.canvas;
        if (!width) return;
        const scale = Math.min(window.devicePixelRatio, 2);
        this.canvas.width = width * scale;
        this.canvas.height = height * scale;
        const pen = this.canvas.getContext('2d');
        pen.scale(scale, scale);
        this.measure(width, height);
        this.drawGrid(pen);
        this.track.curves.forEach((curve, i) => this.drawCurve(pen, curve, kAxisColours[i]));
        pen.strokeStyle = '#f0a030';
        pen.strokeRect(this.x(this.time), this.top, 0, this.bottom - this.top);
    }

    drawGrid(pen) {
        pen.font = '11px system-ui, sans-serif';
        pen.fillStyle = '#a9b2c0';
        pen.strokeStyle = '#3a424e';
        pen.textBaseline = 'middle';
        pen.textAlign = 'right';
        for (let i = 0; i <= 4; ++i) {
            const value = this.low + (this.high - this.low) * i / 4;
            pen.strokeRect(this.left, this.y(value), this.right - this.left, 0);
            pen.fillText(shortNumber(value), this.left - 4, this.y(value));
        }
        pen.textBaseline = 'top';
        this.range.forEach((time, i) => {
            pen.textAlign = i === 0 ? 'left' : 'right';
            pen.fillText(shortNumber(time) + ' s', this.x(time), this.bottom + 5);
        });
    }

    drawCurve(pen, curve, colour) {
        pen.strokeStyle = pen.fillStyle = colour;
        pen.lineWidth = 1.5;
        pen.beginPath();
        curve.points.forEach(([time, value]) => pen.lineTo(this.x(time), this.y(value)));
        pen.stroke();
        pen.lineWidth = 1;
        if (curve.keys.length > (this.right - this.left) / 4) return;
        curve.keys.forEach(([time, value]) =>
            pen.fillRect(this.x(time) - 2, this.y(value) - 2, 4, 4));
    }
}
