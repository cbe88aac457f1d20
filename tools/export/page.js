// The page around the molecule: table of modes, spectrum, controls and files to save. `zandor` holds the data.
(function () {
  'use strict';
  var rows = [], chosen = 0, setName = 'projected', set, displacement, phase = 0, last = 0, dirty = true, scene;
  var steepest = 0, strongest = 0;  // of all modes of the list
  var sorted = { key: 'mode', up: true };
  var still = window.matchMedia('(prefers-reduced-motion: reduce)');
  var dark = window.matchMedia('(prefers-color-scheme: dark)');
  var playing = !still.matches;
  var has_dipoles = zandor.sets.projected.dipole_derivatives !== null;
  function at(id) { return document.getElementById(id); }
  function fixed(value, digits) { return value.toFixed(digits).replace('-', '\u2212'); }
  function scientific(value, noise) {
    if (value === null) return '\u2013';
    if (Math.abs(value) <= noise) return '0';
    var parts = value.toExponential(2).split('e');
    return parts[0].replace('-', '\u2212') + 'e' + (+parts[1] < 0 ? '\u2212' : '+') + Math.abs(parts[1]);
  }
  // What symmetry makes zero is left over as rounding: nobody wants to read its digits.
  function slopeText(value) { return scientific(value, 1e-9 * steepest); }
  function strengthText(value) { return scientific(value, 1e-15 * strongest); }
  function lengthText(value) { return scientific(value, 1e-7 * Math.sqrt(2 * strongest)); }
  function frequencyText(value, digits) { return value < 0 ? fixed(-value, digits) + '\u2009i' : fixed(value, digits); }
  function node(tag, text) {
    var element = document.createElement(tag);
    if (text !== undefined) element.textContent = text;
    return element;
  }

  var columns = [
    { key: 'mode', name: 'Mode', unit: '' },
    { key: 'frequency', name: 'Frequency', unit: 'cm\u207b\u00b9', show: function (v) { return frequencyText(v, 2); } },
    { key: 'reduced_mass', name: 'Red. mass', unit: 'u', show: function (v) { return fixed(v, 3); } },
    { key: 'rigid_weight', name: 'Rigid', unit: 'weight', show: function (v) { return fixed(v, 3); } }
  ];
  if (has_dipoles) {
    columns.push({ key: 'slope', name: '|d\u03bc/dQ|', unit: 'a.u.', show: slopeText });
    columns.push({ key: 'length', name: '|d\u03bc/dq|', unit: 'a.u.', show: lengthText });
    columns.push({ key: 'strength', name: 'Strength', unit: '0\u20131, a.u.', show: strengthText });
  }

  function readSet() {
    set = zandor.sets[setName];
    rows = set.frequencies.map(function (frequency, i) {
      var slope = has_dipoles ? set.dipole_derivatives.slice(3 * i, 3 * i + 3) : null;
      var strength = has_dipoles ? set.strengths[i] : null;
      return {
        mode: i + 1, frequency: frequency, reduced_mass: set.reduced_masses[i], rigid_weight: set.rigid_weights[i],
        rigid: set.rigid_motions.indexOf(i + 1) >= 0, vector: slope,
        slope: slope && Math.hypot(slope[0], slope[1], slope[2]), strength: strength,
        length: strength === null ? null : Math.sqrt(2 * strength)
      };
    });
    steepest = strongest = 0;
    rows.forEach(function (mode) {
      steepest = Math.max(steepest, mode.slope);
      strongest = Math.max(strongest, mode.strength);
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
    document.title = zandor.formula.join('') + ' normal modes';
    at('origin').textContent = zandor.symbols.length + ' atoms \u00b7 ' + zandor.control_file + ' \u00b7 ' + zandor.program;
    zandor.notes.forEach(function (text) { at('notes').append(node('li', text)); });
    columns.forEach(function (column) {
      var cell = node('th'), button = node('button', column.name);
      button.type = 'button';
      button.append(node('small', column.unit));
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
        line.insertCell().textContent = column.show ? column.show(mode[column.key]) : mode[column.key];
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
    var head = node('div'), strong = node('strong', 'Mode ' + chosen + ' \u00b7 ' + frequencyText(mode.frequency, 2) + ' cm\u207b\u00b9');
    strong.style.color = 'var(--text)';
    head.append(strong, kind);
    detail.append(head);
    if (!has_dipoles) return;
    var terms = node('div'), slope = mode.slope * zandor.debye_per_angstrom_root_u;
    terms.className = 'terms';
    terms.append(node('span', 'd\u03bc/dQ = (' + mode.vector.map(slopeText).join(', ') + ') e/\u221am\u2091'));
    terms.append(node('span', '|d\u03bc/dQ| = ' + fixed(slope, 3) + ' D/(\u00c5\u221au)'));
    if (mode.strength !== null) {
      terms.append(node('span', '|d\u03bc/dq| = ' + lengthText(mode.length) + ' ea\u2080'));
      terms.append(node('span', '\u00bd|d\u03bc/dq|\u00b2 = ' + strengthText(mode.strength) + ' e\u00b2a\u2080\u00b2'));
    }
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
  function niceStep(range, parts) {
    var raw = range / parts, power = Math.pow(10, Math.floor(Math.log10(raw))), ratio = raw / power;
    return power * (ratio > 5 ? 10 : ratio > 2 ? 5 : ratio > 1 ? 2 : 1);
  }
  function drawSpectrum() {
    var canvas = at('spectrum'), ratio = window.devicePixelRatio || 1, width = canvas.clientWidth, height = canvas.clientHeight;
    var context = canvas.getContext('2d'), style = getComputedStyle(canvas), byStrength = heightKind() === 'strength';
    function ink(name) { return style.getPropertyValue(name); }
    var vibrations = rows.filter(function (mode) { return !mode.rigid; });
    var high = 100, low = 0;
    vibrations.forEach(function (mode) {
      high = Math.max(high, mode.frequency);
      low = Math.min(low, mode.frequency);
    });
    var step = niceStep((high - low) * 1.04, width / 90), left = 8, right = width - 14, base = height - 36, top = 24;
    low = low < 0 ? low - 0.03 * (high - low) : 0;
    high += 0.03 * (high - low);
    function x(frequency) { return left + (frequency - low) / (high - low) * (right - left); }
    canvas.width = Math.round(width * ratio);
    canvas.height = Math.round(height * ratio);
    context.setTransform(ratio, 0, 0, ratio, 0, 0);
    context.font = '12px ' + style.fontFamily;
    context.textAlign = 'center';
    context.strokeStyle = ink('--line');
    context.fillStyle = ink('--quiet');
    context.beginPath();
    context.moveTo(left, base + 0.5);
    context.lineTo(right, base + 0.5);
    for (var tick = Math.ceil(low / step) * step; tick <= high; tick += step) {
      context.moveTo(x(tick), base + 0.5);
      context.lineTo(x(tick), base + 5);
      context.fillText(tick < 0 ? -tick + 'i' : tick, Math.max(left + 6, Math.min(x(tick), right - 14)), base + 18);
    }
    context.stroke();
    context.fillText('wavenumber / cm\u207b\u00b9', (left + right) / 2, height - 3);
    sticks = vibrations.map(function (mode) {
      var share = byStrength ? (strongest > 0 && mode.strength !== null ? mode.strength / strongest : 0) : 0.8;
      return { mode: mode.mode, x: x(mode.frequency), y: base - share * (base - top), imaginary: mode.frequency < 0 };
    });
    sticks.forEach(drawStick);
    sticks.filter(function (stick) { return stick.mode === chosen; }).forEach(function (stick) {
      drawStick(stick);
      context.fillStyle = ink('--text');
      context.textAlign = stick.x < 90 ? 'left' : stick.x > width - 90 ? 'right' : 'center';
      context.fillText('mode ' + chosen + ', ' + frequencyText(row(chosen).frequency, 1), stick.x, stick.y - 9);
    });
    function drawStick(stick) {
      var own = stick.mode === chosen;
      context.strokeStyle = context.fillStyle = ink(own ? '--arrow' : stick.imaginary ? '--alarm' : '--accent');
      context.lineWidth = own ? 3 : vibrations.length > 100 ? 1 : 2;
      context.setLineDash(stick.imaginary ? [4, 3] : []);
      context.beginPath();
      context.moveTo(stick.x, base);
      context.lineTo(stick.x, stick.y);
      context.stroke();
      context.setLineDash([]);
      if (stick.y > base - 2 && (own || stick.imaginary || vibrations.length <= 100)) {  // nothing to see of its height: a mark on the axis
        context.beginPath();
        context.arc(stick.x, base, own ? 4 : 2.5, 0, 2 * Math.PI);
        context.fill();
      }
    }
    at('spectrum-title').textContent = byStrength ? 'Herzberg\u2013Teller strength of the 0\u20131 transitions' : 'Frequencies';
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

  function save(name, text, type) {
    var link = node('a'), url = URL.createObjectURL(new Blob([text], { type: type }));
    link.href = url;
    link.download = name;
    link.click();
    setTimeout(function () { URL.revokeObjectURL(url); }, 10000);
  }
  function saveTable() {
    var lines = zandor.notes.map(function (text) { return '# ' + text; });
    lines.push('mode,frequency_cm-1,reduced_mass_u,rigid_weight,rigid_motion' +
      (has_dipoles ? ',dmu_dQ_x_au,dmu_dQ_y_au,dmu_dQ_z_au,dmu_dq_au,strength_0-1_au' : ''));
    rows.forEach(function (mode) {
      var cells = [mode.mode, mode.frequency, mode.reduced_mass, mode.rigid_weight, mode.rigid ? 1 : 0];
      if (has_dipoles) cells = cells.concat(mode.vector, mode.strength === null ? ['', ''] : [mode.length, mode.strength]);
      lines.push(cells.join(','));
    });
    save('modes-' + setName + '.csv', lines.join('\n') + '\n', 'text/csv');
  }
  function saveFrame() {
    var amplitude = +at('amplitude').value, lines = [zandor.symbols.length,
      'Properties=species:S:1:pos:R:3:mode:R:3 mode#=' + chosen + ' frequency_cm-1=' + row(chosen).frequency +
      (zandor.changed_masses ? ' note="' + zandor.changed_masses + '"' : '')];
    zandor.symbols.forEach(function (symbol, a) {
      var text = symbol;
      [0, 1, 2].forEach(function (k) { text += ' ' + zandor.geometry[3 * a + k].toFixed(8); });
      [0, 1, 2].forEach(function (k) { text += ' ' + (amplitude * displacement[3 * a + k]).toFixed(8); });
      lines.push(text);
    });
    save('mode-' + chosen + '.xyz', lines.join('\n') + '\n', 'chemical/x-xyz');
  }

  function play(on) {
    playing = on;
    at('play').textContent = on ? 'Pause' : 'Play';
    dirty = true;
  }
  function showSliders() {
    at('amplitude-value').textContent = (+at('amplitude').value).toFixed(2) + ' \u00c5';
    at('speed-value').textContent = (+at('speed').value).toFixed(1) + ' Hz';
    dirty = true;
  }
  function takeColours() {
    var rgb = getComputedStyle(document.querySelector('.card')).backgroundColor.match(/\d+/g);
    scene.setHaze(rgb.slice(0, 3).map(Number));
    drawSpectrum();
    dirty = true;
  }
  function frame(now) {
    if (playing) phase += Math.min(now - last, 100) / 1000 * at('speed').value * 2 * Math.PI;
    last = now;
    if (playing || dirty) scene.draw(displacement, at('amplitude').value * Math.sin(phase), at('arrows').checked);
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
    at('arrows').addEventListener('change', function () { dirty = true; });
    at('amplitude').addEventListener('input', showSliders);
    at('speed').addEventListener('input', showSliders);
    at('sets').addEventListener('change', function (event) { changeSet(event.target.value); });
    at('heights').addEventListener('change', drawSpectrum);
    at('spectrum').addEventListener('click', pickStick);
    at('csv').addEventListener('click', saveTable);
    at('xyz').addEventListener('click', saveFrame);
    window.addEventListener('resize', function () { drawSpectrum(); dirty = true; });
    dark.addEventListener('change', takeColours);
    still.addEventListener('change', function () { if (still.matches) play(false); });
  }

  scene = createRenderer(at('molecule'), zandor.atomic_numbers, zandor.geometry, zandor.view);
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
