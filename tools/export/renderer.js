// Draws a molecule as balls and sticks on a 2D canvas, from the back to the front; it asks for no WebGL.
// Coordinates, displacements and radii are flat arrays in Angstrom, `bonds` is one of pairs of atoms, from 0; `view` is
// a 3 x 3 rotation, row by row.
function createRenderer(canvas, numbers, geometry, radii, bonds, view) {
  // Of elements 1 to 96, as Jmol has them.
  var colours = 'ffffffd9ffffcc80ffc2ff00ffb5b59090903050f8ff0d0d90e050b3e3f5ab5cf28aff00bfa6a6f0c8a0ff8000ffff30' +
    '1ff01f80d1e38f40d43dff00e6e6e6bfc2c7a6a6ab8a99c79c7ac7e06633f090a050d050c880337d80b0c28f8f668f8fbd80e3ffa100' +
    'a629295cb8d1702eb000ff0094ffff94e0e073c2c954b5b53b9e9e248f8f0a7d8c006985c0c0c0ffd98fa675736680809e63b5d47a00' +
    '940094429eb057178f00c90070d4ffffffc7d9ffc7c7ffc7a3ffc78fffc761ffc745ffc730ffc71fffc700ff9c00e67500d45200bf38' +
    '00ab244dc2ff4da6ff2194d6267dab266696175487d0d0e0ffd123b8b8d0a6544d5759619e4fb5ab5c00754f45428296420066007d00' +
    '70abfa00baff00a1ff008fff0080ff006bff545cf2785ce3';
  var depths = 6;     // steps of the haze that fades what lies behind
  var eye = 4;        // distance of the eye, in radii of the molecule
  var count = numbers.length, context = canvas.getContext('2d');
  var centre = [0, 1, 2].map(function (k) {
    var low = Infinity, high = -Infinity;
    for (var a = 0; a < count; a++) {
      low = Math.min(low, geometry[3 * a + k]);
      high = Math.max(high, geometry[3 * a + k]);
    }
    return (low + high) / 2;
  });
  // Along the axis, what moves out of a plane would be a dot: the first view is tilted by 22 degrees, about
  // the vertical and the horizontal of the screen.
  var tilt = [-0.2, 0.33];
  var axisColours = ['#d2504a', '#3d9a50', '#4a82d2'];
  var extent = 0, a, turn, zoom, sprites = {}, haze = [255, 255, 255];
  function ball(atom) { return 0.17 + 0.24 * radii[atom]; }
  for (a = 0; a < count; a++) {
    var away = [0, 1, 2].map(function (k) { return geometry[3 * a + k] - centre[k]; });
    extent = Math.max(extent, Math.hypot(away[0], away[1], away[2]) + 0.8);
  }

  // The element's colour mixed with `other` and with the haze of its depth.
  function colour(z, depth, other, share) {
    var at = z > 0 && z < 97 ? 6 * z - 6 : 30, fade = 0.55 * depth / (depths - 1);
    return 'rgb(' + [0, 1, 2].map(function (k) {
      var own = parseInt(colours.substr(at + 2 * k, 2), 16) * (1 - share) + other * share;
      return Math.round(own * (1 - fade) + haze[k] * fade);
    }) + ')';
  }
  function sprite(z, depth) {
    var key = z + ',' + depth;
    if (!sprites[key]) {
      var picture = document.createElement('canvas'), c = picture.getContext('2d');
      picture.width = picture.height = 96;
      var shade = c.createRadialGradient(36, 32, 2, 48, 48, 46);
      shade.addColorStop(0, colour(z, depth, 255, 0.6));
      shade.addColorStop(0.45, colour(z, depth, 255, 0));
      shade.addColorStop(1, colour(z, depth, 0, 0.42));
      c.fillStyle = shade;
      c.strokeStyle = colour(z, depth, 0, 0.62);
      c.lineWidth = 1.5;
      c.beginPath();
      c.arc(48, 48, 46, 0, 2 * Math.PI);
      c.fill();
      c.stroke();
      sprites[key] = picture;
    }
    return sprites[key];
  }
  function line(p, q, width, style) {
    context.strokeStyle = style;
    context.lineWidth = width;
    context.beginPath();
    context.moveTo(p[0], p[1]);
    context.lineTo(q[0], q[1]);
    context.stroke();
  }
  // `size` is the length of the largest arrow on the screen.
  function drawArrow(p, q, size, style) {
    var dx = q[0] - p[0], dy = q[1] - p[1], length = Math.hypot(dx, dy), head = Math.min(0.3 * size, 0.6 * length);
    if (length < 3) return;
    dx /= length;
    dy /= length;
    var neck = [q[0] - head * dx, q[1] - head * dy], wing = 0.42 * head;
    line(p, neck, Math.max(1.5, 0.075 * size), style);
    context.fillStyle = style;
    context.beginPath();
    context.moveTo(q[0], q[1]);
    context.lineTo(neck[0] - wing * dy, neck[1] + wing * dx);
    context.lineTo(neck[0] + wing * dy, neck[1] - wing * dx);
    context.fill();
  }

  function drawText(text, x, y, size, style, rim) {
    context.font = '600 ' + size + 'px ' + getComputedStyle(canvas).fontFamily;
    context.textAlign = 'center';
    context.textBaseline = 'middle';
    context.lineWidth = 3;
    context.lineJoin = 'round';
    context.strokeStyle = rim;
    context.strokeText(text, x, y);
    context.fillStyle = style;
    context.fillText(text, x, y);
  }
  // The axes of the files, in the corner, from the back to the front.
  function drawAxes(width, height) {
    var x = width - 36, y = height - 34;
    [0, 1, 2].sort(function (p, q) { return turn[6 + p] - turn[6 + q]; }).forEach(function (k) {
      var dx = turn[k], dy = -turn[3 + k];
      line([x, y], [x + 20 * dx, y + 20 * dy], 2, axisColours[k]);
      drawText('xyz'[k], x + 27 * dx, y + 27 * dy, 11, axisColours[k], 'rgb(' + haze + ')');
    });
  }
  // Draws the atoms at geometry + shift * displacement, and arrows along the displacement from where they rest.
  function draw(displacement, shift, arrows, labels) {
    var ratio = window.devicePixelRatio || 1, width = canvas.clientWidth, height = canvas.clientHeight;
    if (canvas.width !== Math.round(width * ratio) || canvas.height !== Math.round(height * ratio)) {
      canvas.width = Math.round(width * ratio);
      canvas.height = Math.round(height * ratio);
    }
    context.setTransform(ratio, 0, 0, ratio, 0, 0);
    context.clearRect(0, 0, width, height);
    var scale = 1.08 * zoom * Math.min(width, height) / 2 / extent, style = getComputedStyle(canvas);
    var arrowStyle = style.getPropertyValue('--arrow'), arrowLength = Math.max(0.95, 0.18 * extent);
    function project(atom, factor) {
      var r = [0, 1, 2].map(function (k) {
        return geometry[3 * atom + k] - centre[k] + factor * displacement[3 * atom + k];
      });
      var z = turn[6] * r[0] + turn[7] * r[1] + turn[8] * r[2], near = eye / (eye - Math.min(z / extent, 0.9 * eye));
      return [width / 2 + scale * near * (turn[0] * r[0] + turn[1] * r[1] + turn[2] * r[2]),
        height / 2 - scale * near * (turn[3] * r[0] + turn[4] * r[1] + turn[5] * r[2]), z, near];
    }
    var items = [], points = [], front = -Infinity, i;
    function depth(z) { return Math.max(0, Math.min(depths - 1, Math.round((front - z) / extent / 1.6 * (depths - 1)))); }
    for (i = 0; i < count; i++) {
      points.push(project(i, shift));
      front = Math.max(front, points[i][2]);
      items.push({ z: points[i][2], atom: i });
      if (arrows) {
        var from = project(i, 0), to = project(i, arrowLength);
        items.push({ z: (from[2] + to[2]) / 2, from: from, to: to });
      }
    }
    for (i = 0; i < bonds.length; i += 2) {
      items.push({ z: (points[bonds[i]][2] + points[bonds[i + 1]][2]) / 2 - 0.01, bond: bonds.slice(i, i + 2) });
    }
    items.sort(function (p, q) { return p.z - q.z; });
    items.forEach(function (item) {
      if (item.bond) {
        var ends = item.bond.map(function (atom) { return points[atom]; });
        var middle = [(ends[0][0] + ends[1][0]) / 2, (ends[0][1] + ends[1][1]) / 2], thick = 0.2 * scale * ends[0][3];
        var length = Math.hypot((ends[0][0] - ends[1][0]) / scale, (ends[0][1] - ends[1][1]) / scale, ends[0][2] - ends[1][2]);
        // A stick begins where it leaves the ball: it would hide a ball behind it otherwise.
        var rims = ends.map(function (end, i) {
          var share = 0.9 * ball(item.bond[i]) / length;
          return share < 0.5 ? [0, 1].map(function (k) { return end[k] + 2 * share * (middle[k] - end[k]); }) : middle;
        });
        var zp = numbers[item.bond[0]], zq = numbers[item.bond[1]], at = depth(item.z);
        line(rims[0], rims[1], thick + 1.5, colour(zp, at, 0, 0.62));
        line(rims[0], middle, thick, colour(zp, at, 0, 0.12));
        line(middle, rims[1], thick, colour(zq, at, 0, 0.12));
      } else if (item.to) {
        drawArrow(item.from, item.to, arrowLength * scale, arrowStyle);
      } else {
        var point = points[item.atom], size = ball(item.atom) * scale * point[3];
        context.drawImage(sprite(numbers[item.atom], depth(point[2])), point[0] - size, point[1] - size, 2 * size, 2 * size);
        if (labels) {
          context.globalAlpha = 1 - 0.8 * depth(point[2]) / (depths - 1);
          drawText(item.atom + 1, point[0], point[1], Math.max(8, Math.min(15, 1.1 * size)), '#16191d', '#ffffff');
          context.globalAlpha = 1;
        }
      }
    });
    drawAxes(width, height);
  }
  // Turns about the vertical and the horizontal axis of the screen, radians.
  function rotate(about_y, about_x) {
    var cy = Math.cos(about_y), sy = Math.sin(about_y), cx = Math.cos(about_x), sx = Math.sin(about_x);
    var m = [cy, 0, sy, sx * sy, cx, -sx * cy, -cx * sy, sx, cx * cy], old = turn;
    turn = m.map(function (_, i) {
      var row = 3 * Math.floor(i / 3), column = i % 3;
      return m[row] * old[column] + m[row + 1] * old[column + 3] + m[row + 2] * old[column + 6];
    });
  }
  function reset() {
    turn = view.slice();
    zoom = 1;
    rotate(tilt[0], tilt[1]);
  }
  reset();
  return {
    draw: draw,
    rotate: rotate,
    reset: reset,
    zoom: function (factor) { zoom = Math.max(0.2, Math.min(20, zoom * factor)); },
    setHaze: function (rgb) { haze = rgb; sprites = {}; }
  };
}
