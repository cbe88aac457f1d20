// The page around the molecule: table of modes, spectrum, controls and files to save.
(function () {
  'use strict';
  var zandor = JSON.parse(document.getElementById('data').textContent);
  var rows = [], chosen = 0, setName = 'projected', set, displacement, phase = 0, last = 0, dirty = true, scene;
  var steepest = 0, strongest = 0, sum = 0;  // of all modes of the list
  var sorted = { key: 'mode', up: true };
  var still = window.matchMedia('(prefers-reduced-motion: reduce)');
  var dark = window.matchMedia('(prefers-color-scheme: dark)');
  var playing = !still.matches;
  var has_dipoles = zandor.columns.indexOf('strength_0-1_au') >= 0;
  function at(id) { return document.getElementById(id); }
  function fixed(value, digits) { return value.toFixed(digits).replace('-', '\u2212'); }
  function scientific(value, noise, digits) {
    if (value === null) return '\u2013';
    if (Math.abs(value) <= noise) return '0';
    var parts = value.toExponential(digits === undefined ? 2 : digits).split('e');
    return parts[0].replace('-', '\u2212') + 'e' + (+parts[1] < 0 ? '\u2212' : '+') + Math.abs(parts[1]);
  }
  // What symmetry makes zero is left over as rounding: nobody wants to read its digits.
  function slopeText(value) { return scientific(value, 1e-9 * steepest); }
  function strengthText(value) { return scientific(value, 1e-15 * strongest); }
  function lengthText(value) { return scientific(value, 1e-7 * Math.sqrt(2 * strongest)); }
  function frequencyText(value, digits) { return value < 0 ? fixed(-value, digits) + '\u2009i' : fixed(value, digits); }
  function node(tag, text, title) {
    var element = document.createElement(tag);
    if (text !== undefined) element.textContent = text;
    if (title) element.title = title;
    return element;
  }

  var columns = [
    { key: 'mode', name: 'Mode', short: 'No.', unit: '', title: 'Number of the mode' },
    { key: 'frequency', name: 'Frequency', short: 'Freq.', unit: 'cm\u207b\u00b9', show: function (v) { return frequencyText(v, 2); },
      title: 'Harmonic wavenumber; imaginary ones with an i' },
    { key: 'reduced_mass', name: 'Red. mass', short: 'Red. m.', unit: 'u', show: function (v) { return fixed(v, 3); },
      title: 'Reduced mass of displacements of unit Cartesian length' },
    { key: 'rigid_weight', name: 'Rigid', unit: 'weight', show: function (v) { return fixed(v, 3); },
      title: 'Share of translations and rotations in the mode, 0 to 1' }
  ];
  if (has_dipoles) {
    columns.push({ key: 'slope', name: '|d\u03bc/dQ|', unit: 'a.u.', show: slopeText,
      title: 'Length of the derivative of the transition dipole along the mass-weighted mode, e/\u221am\u2091' });
    columns.push({ key: 'length', name: '|d\u03bc/dq|', unit: 'a.u.', show: lengthText,
      title: 'The same along the dimensionless mode q = \u221a\u03c9 Q, e a\u2080' });
    columns.push({ key: 'strength', name: 'Strength', short: 'Str.', unit: '0\u20131, a.u.', show: strengthText,
      title: 'Strength of the transition 0\u20131: \u00bd|d\u03bc/dq|\u00b2, e\u00b2a\u2080\u00b2' });
  }

  function readSet() {
    set = zandor[setName];
    rows = set.rows.map(function (cells) {
      function cell(name) { return cells[zandor.columns.indexOf(name)]; }
      var vector = has_dipoles ? ['x', 'y', 'z'].map(function (k) { return cell('dmu_dQ_' + k + '_au'); }) : null;
      return {
        mode: cell('mode'), frequency: cell('frequency_cm-1'), reduced_mass: cell('reduced_mass_u'),
        rigid_weight: cell('rigid_weight'), rigid: cell('rigid_motion') === 1, vector: vector,
        slope: vector && Math.hypot.apply(null, vector),
        length: has_dipoles ? cell('dmu_dq_au') : null, strength: has_dipoles ? cell('strength_0-1_au') : null
      };
    });
    steepest = strongest = sum = 0;
    rows.forEach(function (mode) {
      steepest = Math.max(steepest, mode.slope);
      strongest = Math.max(strongest, mode.strength);
      sum += mode.strength;
    });
    if (!set.bytes) set.bytes = window.atob(set.displacements);
  }
  // The displacements of a mode, the farthest moving atom by 1: 16-bit integers, low byte first, on the mode's scale.
  function modeDisplacement(mode) {
    var size = 3 * zandor.symbols.length, start = 2 * size * (mode - 1), result = new Float64Array(size), largest = 0;
    for (var i = 0; i < size; i++) {
      var low = set.bytes.charCodeAt(start + 2 * i), high = set.bytes.charCodeAt(start + 2 * i + 1);
      result[i] = ((high << 24 >> 16) | low) / 32767 * set.displacement_scales[mode - 1];
      if (i % 3 === 2) largest = Math.max(largest, Math.hypot(result[i], result[i - 1], result[i - 2]));
    }
    return largest > 0 ? result.map(function (d) { return d / largest; }) : result;
  }
  function row(mode) { return rows[mode - 1]; }

  function fillHead() {
    at('formula').append.apply(at('formula'), zandor.formula.map(function (part, i) {
      return i % 2 ? node('sub', part) : part;
    }));
    document.title = zandor.formula.join('') + ' normal modes \u00b7 ' + zandor.folder;
    at('folder').textContent = zandor.folder;
    at('origin').textContent = zandor.symbols.length + ' atoms \u00b7 ' + zandor.control_file + ' \u00b7 ' + zandor.program;
    zandor.notes.forEach(function (note) { at(note.warning ? 'warnings' : 'notes').append(node('li', note.text)); });
    columns.forEach(function (column) {
      var cell = node('th'), button = node('button', undefined, column.title + '; a click sorts');
      button.type = 'button';
      button.append(node('span', column.name), node('abbr', column.short || column.name), node('small', column.unit));
      button.addEventListener('click', function () {
        sorted = { key: column.key, up: sorted.key === column.key ? !sorted.up : column.key === 'mode' };
        fillTable();
      });
      cell.append(button);
      document.querySelector('#modes thead tr').append(cell);
    });
  }
  function fillTable() {
    var body = document.querySelector('#modes tbody'), sign = sorted.up ? 1 : -1, fresh = node('tbody');
    Array.prototype.forEach.call(document.querySelectorAll('#modes th'), function (cell, i) {
      if (columns[i].key === sorted.key) cell.setAttribute('aria-sort', sorted.up ? 'ascending' : 'descending');
      else cell.removeAttribute('aria-sort');
    });
    rows.slice().sort(function (p, q) {  // what has no value stands at the end
      var a = p[sorted.key], b = q[sorted.key];
      return a === null || b === null ? (a === null) - (b === null) || p.mode - q.mode : sign * (a - b) || p.mode - q.mode;
    }).forEach(function (mode) {
      var line = fresh.insertRow();
      columns.forEach(function (column) {
        var cell = line.insertCell(), value = mode[column.key];
        cell.textContent = column.show ? column.show(value) : value;
        cell.title = column.title + ': ' + (value === null ? 'none' : value);
      });
      line.dataset.mode = mode.mode;
      line.className = (mode.rigid ? 'rigid ' : '') + (mode.frequency < 0 && !mode.rigid ? 'imaginary' : '');
    });
    body.replaceWith(fresh);
    markRow();
  }
  function markRow() {
    Array.prototype.forEach.call(document.querySelectorAll('#modes tbody tr'), function (line) {
      var own = +line.dataset.mode === chosen;
      line.setAttribute('aria-selected', own);
      line.tabIndex = own ? 0 : -1;
    });
  }
  function showDetail() {
    var mode = row(chosen), detail = at('detail'), kind = mode.rigid ? 'rigid motion' : mode.frequency < 0 ? 'imaginary' : '';
    detail.textContent = '';
    var head = node('div'), strong = node('strong', 'Mode ' + chosen + ' \u00b7 ' + frequencyText(mode.frequency, 2) + ' cm\u207b\u00b9',
      'The selected mode and its wavenumber');
    strong.style.color = 'var(--text)';
    head.append(strong, kind);
    detail.append(head);
    if (!has_dipoles) return;
    var terms = node('div'), slope = mode.slope * zandor.debye_per_angstrom_root_u;
    terms.className = 'terms';
    terms.append(
      node('span', 'd\u03bc/dQ = (' + mode.vector.map(slopeText).join(', ') + ') e/\u221am\u2091',
        'Derivative of the transition dipole along the mass-weighted mode: x, y, z'),
      node('span', '|d\u03bc/dQ| = ' + fixed(slope, 3) + ' D/(\u00c5\u221au)', 'Its length in Debye, Angstrom and atomic mass units'));
    if (mode.strength !== null) {
      terms.append(
        node('span', '|d\u03bc/dq| = ' + lengthText(mode.length) + ' ea\u2080', 'Its length along the dimensionless mode q = \u221a\u03c9 Q'),
        node('span', '\u00bd|d\u03bc/dq|\u00b2 = ' + strengthText(mode.strength) + ' e\u00b2a\u2080\u00b2', 'Strength of the transition 0\u20131'));
    }
    if (mode.strength > 0) terms.append(node('span', fixed(100 * mode.strength / sum, 2) + ' %', 'Share of the sum of the strengths'));
    detail.append(terms);
  }
  function choose(mode, scroll) {
    chosen = mode;
    displacement = modeDisplacement(mode);
    dirty = true;
    markRow();
    showDetail();
    drawSpectrum();
    at('molecule').setAttribute('aria-label', 'Mode ' + mode + ' of the molecule, ' + frequencyText(row(mode).frequency, 2) +
      ' per centimetre; arrow keys turn the view');
    var line = document.querySelector('#modes tr[aria-selected=true]'), box = line.closest('.scroll');
    var head = document.querySelector('#modes thead').offsetHeight;
    if (scroll && (line.offsetTop < box.scrollTop + head || line.offsetTop + line.offsetHeight > box.scrollTop + box.clientHeight)) {
      box.scrollTop = line.offsetTop - box.clientHeight / 2;
    }
  }
  function changeSet(name) {
    setName = name;
    readSet();
    fillTable();
    choose(chosen, true);
  }

  // The spectrum: where each vibration's stick stands is kept for picking.
  var sticks = [];
  function heightKind() { return document.querySelector('[name=height]:checked').value; }
  function ink(name) { return getComputedStyle(at('spectrum')).getPropertyValue(name); }
  function niceStep(range, parts) {
    var raw = range / parts, power = Math.pow(10, Math.floor(Math.log10(raw))), ratio = raw / power;
    return power * (ratio > 5 ? 10 : ratio > 2 ? 5 : ratio > 1 ? 2 : 1);
  }
  function heightText(strength) { return strongest < 0.01 || strongest > 1e4 ? scientific(strength, 0, 1) : String(strength); }
  // What is marked on an axis from `low` to `high`, about `parts` times.
  function ticks(low, high, parts) {
    var step = niceStep(high - low, parts), values = [];
    for (var n = Math.ceil(low / step); n * step <= high; n++) values.push(+(n * step).toPrecision(6));
    return values;
  }
  function drawAxis(context, plot) {
    context.textAlign = 'center';
    context.strokeStyle = ink('--line');
    context.fillStyle = ink('--quiet');
    context.lineWidth = 1;
    context.beginPath();
    context.moveTo(plot.left, plot.base + 0.5);
    context.lineTo(plot.right, plot.base + 0.5);
    ticks(plot.low, plot.high, (plot.right - plot.left) / 60).forEach(function (tick) {
      context.moveTo(plot.x(tick), plot.base + 0.5);
      context.lineTo(plot.x(tick), plot.base + 5);
      context.fillText(tick < 0 ? -tick + 'i' : tick, Math.min(plot.x(tick), plot.right - 14), plot.base + 18);
    });
    context.fillText('wavenumber / cm\u207b\u00b9', (plot.left + plot.right) / 2, plot.base + 33);
    context.textAlign = 'right';
    plot.heights.forEach(function (tick) {
      context.moveTo(plot.left - 4, plot.y(tick) + 0.5);
      context.lineTo(plot.right, plot.y(tick) + 0.5);
      context.fillText(heightText(tick), plot.left - 7, plot.y(tick) + 4);
    });
    context.stroke();
    if (plot.heights.length === 0) return;
    context.save();
    context.textAlign = 'center';
    context.translate(11, (plot.base + plot.top) / 2);
    context.rotate(-Math.PI / 2);
    context.fillText('strength / e\u00b2a\u2080\u00b2', 0, 0);
    context.restore();
  }
  function drawStick(context, plot, stick) {
    var own = stick.mode === chosen;
    context.strokeStyle = context.fillStyle = ink(own ? '--arrow' : stick.imaginary ? '--alarm' : '--accent');
    context.lineWidth = own ? plot.thick + 1 : plot.thick;
    context.setLineDash(stick.imaginary ? [4, 3] : []);
    context.beginPath();
    context.moveTo(stick.x, plot.base);
    context.lineTo(stick.x, stick.y);
    context.stroke();
    context.setLineDash([]);
    if (stick.y > plot.base - 2 && (own || stick.imaginary || plot.thick > 1)) {  // nothing to see of its height: a mark on the axis
      context.beginPath();
      context.arc(stick.x, plot.base, own ? 4 : 2.5, 0, 2 * Math.PI);
      context.fill();
    }
  }
  // Degenerate vibrations stand side by side, about the place of their frequencies.
  function placeSticks(plot, vibrations, byStrength) {
    var group = [];
    function endGroup() {
      group.forEach(function (stick, i) { stick.x += (i - (group.length - 1) / 2) * (plot.thick + 2); });
      group = [];
    }
    sticks = vibrations.map(function (mode) {
      return { mode: mode.mode, frequency: mode.frequency, x: plot.x(mode.frequency), imaginary: mode.frequency < 0,
        y: byStrength ? plot.y(mode.strength) : plot.base - 0.8 * (plot.base - plot.top) };
    });
    sticks.sort(function (p, q) { return p.frequency - q.frequency; }).forEach(function (stick) {
      if (group.length && !(stick.frequency - group[group.length - 1].frequency <= zandor.degenerate_within)) endGroup();
      group.push(stick);
    });
    endGroup();
  }
  // The strengths as Gaussians as high as their sticks, summed up at equal steps from the left to the right end.
  function curveOf(plot, vibrations, width) {
    var lines = vibrations.filter(function (mode) { return width > 0 && mode.strength > 0; }), curve = [], steps = 3000;
    for (var i = 0; i <= steps && lines.length; i++) {
      var place = plot.low + i / steps * (plot.high - plot.low);
      curve.push(lines.reduce(function (height, mode) {
        var away = (place - mode.frequency) / width;
        return Math.abs(away) < 4 ? height + mode.strength * Math.exp(-4 * Math.LN2 * away * away) : height;
      }, 0));
    }
    return curve;
  }
  function drawCurve(context, plot, curve) {
    context.strokeStyle = context.fillStyle = ink('--curve');
    context.lineWidth = 1.5;
    context.beginPath();
    curve.forEach(function (height, i) {
      context.lineTo(plot.left + i / (curve.length - 1) * (plot.right - plot.left), plot.y(height));
    });
    context.stroke();
    context.lineTo(plot.right, plot.base);
    context.lineTo(plot.left, plot.base);
    context.globalAlpha = 0.12;
    context.fill();
    context.globalAlpha = 1;
  }
  function drawSpectrum() {
    var canvas = at('spectrum'), ratio = window.devicePixelRatio || 1, width = canvas.clientWidth, height = canvas.clientHeight;
    var context = canvas.getContext('2d'), byStrength = heightKind() === 'strength';
    var vibrations = rows.filter(function (mode) { return !mode.rigid; });
    var high = 100, low = 0;
    vibrations.forEach(function (mode) {
      high = Math.max(high, mode.frequency);
      low = Math.min(low, mode.frequency);
    });
    var line = byStrength ? +at('width').value : 0, margin = Math.max(0.03 * (high - low), 1.2 * line);
    canvas.width = Math.round(width * ratio);
    canvas.height = Math.round(height * ratio);
    context.setTransform(ratio, 0, 0, ratio, 0, 0);
    context.font = '12px ' + getComputedStyle(canvas).fontFamily;
    var plot = { left: 8, right: width - 14, base: height - 36, top: 24, thick: vibrations.length > 100 ? 1 : 2,
      low: low < 0 ? low - margin : 0, high: high + margin };
    var curve = curveOf(plot, vibrations, line), tallest = Math.max.apply(null, curve.concat(strongest));
    plot.heights = byStrength && strongest > 0 ? ticks(0, tallest, 4).slice(1) : [];
    plot.heights.forEach(function (tick) { plot.left = Math.max(plot.left, 30 + context.measureText(heightText(tick)).width); });
    plot.x = function (frequency) {
      return plot.left + (frequency - plot.low) / (plot.high - plot.low) * (plot.right - plot.left);
    };
    plot.y = function (strength) { return plot.base - (tallest > 0 ? strength / tallest : 0) * (plot.base - plot.top); };
    drawAxis(context, plot);
    placeSticks(plot, vibrations, byStrength);
    drawCurve(context, plot, curve);
    sticks.forEach(function (stick) { drawStick(context, plot, stick); });
    sticks.filter(function (stick) { return stick.mode === chosen; }).forEach(function (stick) {
      drawStick(context, plot, stick);
      context.fillStyle = ink('--text');
      context.textAlign = stick.x < plot.left + 70 ? 'left' : stick.x > width - 90 ? 'right' : 'center';
      var name = 'mode ' + chosen + ', ' + frequencyText(row(chosen).frequency, 1);
      context.strokeStyle = ink('--card');  // a rim, for the sticks behind it
      context.lineWidth = 4;
      context.strokeText(name, stick.x, stick.y - 9);
      context.fillText(name, stick.x, stick.y - 9);
    });
    at('width').disabled = !byStrength;
    at('spectrum-title').textContent = byStrength ? 'Herzberg\u2013Teller strength of the 0\u20131 transitions' : 'Frequencies';
    at('sum').textContent = !byStrength ? '' : sum > 0 ? 'sum ' + strengthText(sum) + ' e\u00b2a\u2080\u00b2' : 'no strength in first order';
    at('sum').title = sum > 0 ? 'Sum of the strengths of all vibrations: ' + sum : 'No derivative of the transition dipole is above the rounding of the printed dipoles';
    canvas.setAttribute('aria-label', 'Stick spectrum of ' + vibrations.length + ' vibrations; the table holds its numbers');
  }
  function pickStick(event) {
    var box = at('spectrum').getBoundingClientRect(), best = null;
    sticks.forEach(function (stick) {
      var away = Math.abs(stick.x - (event.clientX - box.left));
      if (away < 20 && (!best || away < best.away)) best = { away: away, mode: stick.mode };
    });
    if (best) choose(best.mode, true);
  }

  function save(name, blob) {
    var link = node('a'), url = URL.createObjectURL(blob);
    link.href = url;
    link.download = name;
    link.click();
    setTimeout(function () { URL.revokeObjectURL(url); }, 10000);
  }
  function saveText(name, lines, type) { save(name, new Blob([lines.join('\n') + '\n'], { type: type })); }
  function saveTable() {
    var notes = zandor.notes.map(function (note) { return '# ' + note.text; });
    saveText('modes-' + setName + '.csv', notes.concat([zandor.columns], set.rows), 'text/csv');
  }
  // The frame that `zandor_export xyz` writes, but for the rounding of the displacements.
  function saveFrame() {
    var amplitude = +at('amplitude').value;
    saveText('mode-' + chosen + '.xyz', [zandor.atoms.length, set.frames[chosen - 1]].concat(zandor.atoms.map(function (text, a) {
      [0, 1, 2].forEach(function (k) { text += (amplitude * displacement[3 * a + k]).toFixed(10).padStart(16); });
      return text;
    })), 'chemical/x-xyz');
  }
  function savePicture() {
    var canvas = at('molecule'), copy = node('canvas'), context = copy.getContext('2d');
    copy.width = canvas.width;
    copy.height = canvas.height;
    context.fillStyle = getComputedStyle(document.querySelector('.card')).backgroundColor;
    context.fillRect(0, 0, copy.width, copy.height);
    context.drawImage(canvas, 0, 0);
    copy.toBlob(function (blob) { save('mode-' + chosen + '.png', blob); });
  }

  function play(on) {
    playing = on;
    if (!on) phase = 0;  // the atoms rest where the arrows begin
    at('play').textContent = on ? 'Pause' : 'Play';
    dirty = true;
  }
  function showSliders() {
    at('amplitude-value').textContent = (+at('amplitude').value).toFixed(2) + ' \u00c5';
    at('width-value').textContent = at('width').value + ' cm\u207b\u00b9';
    at('speed-value').textContent = (+at('speed').value).toFixed(1) + ' Hz';
    dirty = true;
  }
  function takeColours() {
    var rgb = getComputedStyle(document.querySelector('.card')).backgroundColor.match(/\d+/g);
    scene.setHaze(rgb.slice(0, 3).map(Number));
    drawSpectrum();
    dirty = true;
  }
  function draw() {
    scene.draw(displacement, at('amplitude').value * Math.sin(phase), at('arrows').checked, at('numbers').checked);
  }
  function frame(now) {
    if (playing) phase += Math.min(now - last, 100) / 1000 * at('speed').value * 2 * Math.PI;
    last = now;
    if (playing || dirty) draw();
    dirty = false;
    window.requestAnimationFrame(frame);
  }

  function listenToCanvas() {
    var canvas = at('molecule'), fingers = {};
    canvas.addEventListener('pointerdown', function (event) {
      fingers[event.pointerId] = [event.clientX, event.clientY];
      canvas.setPointerCapture(event.pointerId);
    });
    canvas.addEventListener('pointermove', function (event) {
      var own = fingers[event.pointerId], ids = Object.keys(fingers);
      if (!own) return;
      var other = fingers[ids[0] === String(event.pointerId) ? ids[1] : ids[0]];
      if (ids.length > 1) {  // two fingers: what is between them
        scene.zoom(Math.hypot(event.clientX - other[0], event.clientY - other[1]) / Math.hypot(own[0] - other[0], own[1] - other[1]));
      } else {
        scene.rotate((event.clientX - own[0]) * 0.01, (event.clientY - own[1]) * 0.01);
      }
      fingers[event.pointerId] = [event.clientX, event.clientY];
      dirty = true;
    });
    ['pointerup', 'pointercancel'].forEach(function (name) {
      canvas.addEventListener(name, function (event) { delete fingers[event.pointerId]; });
    });
    canvas.addEventListener('wheel', function (event) {
      event.preventDefault();
      scene.zoom(Math.exp(-event.deltaY * 0.0015));
      dirty = true;
    }, { passive: false });
    canvas.addEventListener('keydown', function (event) {
      var step = { ArrowLeft: [-0.1, 0], ArrowRight: [0.1, 0], ArrowUp: [0, -0.1], ArrowDown: [0, 0.1] }[event.key];
      if (step) scene.rotate(step[0], step[1]);
      else if (event.key === '+' || event.key === '-') scene.zoom(event.key === '+' ? 1.1 : 1 / 1.1);
      else return;
      event.preventDefault();
      dirty = true;
    });
  }
  function listenToTable() {
    at('modes').addEventListener('click', function (event) {
      var line = event.target.closest('tbody tr');
      if (line) choose(+line.dataset.mode, false);
    });
    at('modes').addEventListener('keydown', function (event) {
      var line = event.target.closest('tbody tr');
      var next = line && { ArrowDown: line.nextSibling, ArrowUp: line.previousSibling }[event.key];
      if (!next) return;
      event.preventDefault();
      choose(+next.dataset.mode, true);
      next.focus({ preventScroll: true });
    });
  }
  function listen() {
    listenToCanvas();
    listenToTable();
    at('play').addEventListener('click', function () { play(!playing); });
    at('reset').addEventListener('click', function () { scene.reset(); dirty = true; });
    ['arrows', 'numbers'].forEach(function (id) { at(id).addEventListener('change', function () { dirty = true; }); });
    at('amplitude').addEventListener('input', showSliders);
    at('speed').addEventListener('input', showSliders);
    at('sets').addEventListener('change', function (event) { changeSet(event.target.value); });
    at('heights').addEventListener('change', drawSpectrum);
    at('width').addEventListener('input', function () { showSliders(); drawSpectrum(); });
    at('spectrum').addEventListener('click', pickStick);
    at('csv').addEventListener('click', saveTable);
    at('xyz').addEventListener('click', saveFrame);
    at('png').addEventListener('click', savePicture);
    window.addEventListener('resize', function () { drawSpectrum(); dirty = true; });
    dark.addEventListener('change', takeColours);
    still.addEventListener('change', function () { if (still.matches) play(false); });
  }

  scene = createRenderer(at('molecule'), zandor.atomic_numbers, zandor.geometry, zandor.radii, zandor.bonds, zandor.view);
  document.querySelector('[name=height][value=' + (has_dipoles ? 'strength' : 'frequency') + ']').checked = true;
  document.querySelector('[name=height][value=strength]').disabled = !has_dipoles;
  document.querySelector('[name=set][value=projected]').checked = true;
  readSet();
  chosen = (rows.filter(function (mode) { return !mode.rigid; })[0] || rows[0]).mode;
  fillHead();
  fillTable();
  listen();
  play(playing);
  showSliders();
  choose(chosen, true);
  takeColours();
  window.requestAnimationFrame(frame);
})();
