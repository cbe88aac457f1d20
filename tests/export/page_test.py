"""The page in a headless Chromium: what it shows, saves and does not ask the network for.

usage: page_test.py ZANDOR_EXPORT ZANDOR_HT MAKE_JOBS LARGE JOBDIRECTORY

LARGE is the number of atoms of the large molecule.
"""
import json
import math
import os
import shutil
import subprocess
import sys
import tempfile
import time

from browser import Browser
from common import copy_of, export, skip

program, zandor_ht, make_jobs, large_natom, example = sys.argv[1:6]
chromium = shutil.which("chromium") or shutil.which("chromium-browser")
if chromium is None:
    skip("needs chromium")

PIXELS = "document.getElementById('%s').toDataURL()"
MODES = "Array.from(document.querySelectorAll('#modes tbody tr'), function (r) { return +r.dataset.mode; })"


def pixels(browser, canvas="molecule"):
    browser.wait_for_frames(3)
    return browser.evaluate(PIXELS % canvas)


def open_page(browser, folder, *options):
    page = os.path.join(folder, "modes.html")
    export(program, folder, "html", "-o", page, *options)
    browser.prefer(reduced_motion="reduce")
    browser.open(page, 1280, 900)


def check_picking(browser, count):
    """A row picked by mouse changes the picture, which otherwise stands still where little motion is wanted."""
    assert browser.evaluate(MODES) == list(range(1, count + 1))
    before, spectrum = pixels(browser), pixels(browser, "spectrum")
    assert before == pixels(browser), "stands still"
    browser.click("#modes tr[data-mode='%d']" % count)
    assert pixels(browser) != before and pixels(browser, "spectrum") != spectrum
    assert "Mode %d " % count in browser.evaluate("document.getElementById('detail').textContent")
    browser.click("#play")
    moving = pixels(browser)
    time.sleep(0.2)
    assert pixels(browser) != moving, "moves"
    browser.click("#play")
    rest = pixels(browser)
    browser.click("#play")
    time.sleep(0.3)
    browser.click("#play")
    assert pixels(browser) == rest, "pauses where the arrows begin"
    for control in "arrows", "numbers":
        before = pixels(browser)
        browser.click("#" + control)
        assert pixels(browser) != before, control
    browser.click("#sets label:last-of-type span")
    assert browser.evaluate("document.querySelector('[name=set]:checked').value") == "unprojected"
    browser.click("#sets label:first-of-type span")


def check_sorting(browser, modes):
    browser.click("#modes th:nth-child(3) button")
    order = browser.evaluate(MODES)
    masses = [modes["reduced_masses"][mode - 1] for mode in order]
    assert masses == sorted(masses, reverse=True) and sorted(order) == list(range(1, len(order) + 1))
    browser.click("#modes th:nth-child(1) button")


def check_values(browser, folder, data, *options):
    """What the table, its tooltips and the sum of strengths show, beside zandor_ht and the masses and displacements."""
    run = subprocess.run([zandor_ht, "control.inp", "--json", *options], cwd=folder, capture_output=True, check=True)
    terms = json.loads(run.stdout)
    shown = browser.evaluate("Array.from(document.querySelectorAll('#modes tbody tr'), function (row) {"
                             " return Array.from(row.cells, function (c) { return [c.textContent, c.title.split(': ').pop()]; }); })")
    wanted = {k: [k, 0, None, 1, None, None, None] for k in range(1, len(shown) + 1)}
    for mode in terms["modes"]:
        wanted[mode["mode"]] = [mode["mode"], mode["frequency"], None, 0, math.hypot(*mode["dmu_dQ"]), mode["dmu_dq"], mode["strength"]]
    for k, (row, displacement) in enumerate(zip(shown, data["projected"]["displacements"]), 1):
        wanted[k][2] = sum(m * x * x for m, atom in zip(data["masses"], displacement) for x in atom)
        for column, ((text, title), value) in enumerate(zip(row, wanted[k])):
            if value is None:  # the derivatives along rigid motions are none of zandor_ht
                continue
            number = float(title) if title != "none" else 0.0
            assert abs(number - value) <= 1e-9 * abs(value) + 1e-15, (k, row, wanted[k])
            text = float(text.replace("\u2212", "-").replace("\u2013", "0")) if "i" not in text else -float(text.split("\u2009")[0])
            assert abs(text - value) <= max(0.0051 * abs(value), 5.1e-4 if column < 4 else 1e-9), (k, row, wanted[k])
    total = browser.evaluate("document.getElementById('sum').title.split(': ').pop()")
    assert abs(float(total) / terms["totals"]["strength"] - 1) < 1e-9, total
    untitled = "Array.from(document.querySelectorAll('button, label, td, #detail span, #detail strong')).filter(function (e) { return !e.title; }).length"
    assert browser.evaluate(untitled) == 0
    assert browser.evaluate("document.querySelector('h1').textContent").endswith(os.path.basename(folder))


def saved(folder, name):
    for _ in range(100):
        if os.path.exists(os.path.join(folder, name)):
            break
        time.sleep(0.1)
    with open(os.path.join(folder, name), "rb") as file:
        return file.read()


def check_files(browser, folder, modes, *options):
    """The files of the buttons: the table with the numbers of the JSON, the frame of zandor_export xyz, a picture."""
    browser.call("Browser.setDownloadBehavior", behavior="allow", downloadPath=folder)
    count = len(modes["frequencies"])
    for button in "csv", "xyz", "png":
        browser.click("#" + button)
    lines = saved(folder, "modes-projected.csv").decode().split("\n")[:-1]
    assert lines[0] == "# masses changed: all H 2.014101778", lines[0]
    names, *rows = (line.split(",") for line in lines if not line.startswith("#"))
    for name, values in ("frequency_cm-1", modes["frequencies"]), ("reduced_mass_u", modes["reduced_masses"]):
        assert [float(row[names.index(name)]) for row in rows] == values
    assert all(len(row) == len(names) for row in rows)
    assert sum(row[names.index("strength_0-1_au")] != "" for row in rows) == count - 7, "all but rigid motions and the imaginary mode"
    frame = saved(folder, "mode-%d.xyz" % count).decode().split("\n")
    wanted = export(program, folder, "xyz", "--mode", str(count), *options).split("\n")
    assert frame[:2] == wanted[:2] and frame[1].endswith(' note="masses changed: all H 2.014101778"'), frame
    for mine, theirs in zip(frame[2:], wanted[2:]):
        assert mine[:52] == theirs[:52] and len(mine) == len(theirs), "only displacements are rounded"
        assert all(abs(float(p) - float(q)) < 2e-5 for p, q in zip(mine[52:].split(), theirs[52:].split()))
    assert saved(folder, "mode-%d.png" % count).startswith(b"\x89PNG")


def check_sticks(browser, folder):
    """Two vibrations of nearly one frequency stand side by side; a motion out of the plane of all atoms has arrows to see."""
    page = os.path.join(folder, "modes.html")
    with open(page) as file:
        text = file.read()
    begin, end = text.index("[[1,"), text.index("]]", text.index("[[1,"))
    rows = json.loads(text[begin:end + 2])
    rows[9][1] = rows[8][1] + 0.05
    with open(page, "w") as file:
        file.write(text[:begin] + json.dumps(rows) + text[end + 2:])
    browser.prefer(reduced_motion="reduce", colour_scheme="light")
    browser.open(page, 1280, 900)
    assert browser.evaluate("""(function () { var c = document.getElementById('molecule'), n = 0;
        var d = c.getContext('2d').getImageData(0, 0, c.width, c.height).data;
        for (var i = 0; i < d.length; i += 4) n += d[i] === 200 && d[i + 1] === 102 && d[i + 2] === 28; return n; })()""") > 50
    browser.click("#heights label:last-of-type span")
    sticks = browser.evaluate("""(function () { var c = document.getElementById('spectrum'), runs = 0, before = 0;
        var d = c.getContext('2d').getImageData(0, c.height - 60, c.width, 1).data;
        for (var i = 3; i < d.length; i += 4) { runs += d[i] > 60 && before <= 60; before = d[i]; } return runs; })()""")
    assert sticks >= 6, sticks


def check_curve(browser):
    """The curve is as wide at half the height of its highest line as the control says, and leaves with the sticks' heights."""
    def wide(width):
        browser.evaluate("(function (e) { e.value = %d; e.dispatchEvent(new Event('input')); })(document.getElementById('width'))" % width)
        return browser.evaluate("""(function () { var c = document.getElementById('spectrum'), at = [];
            var copy = c.cloneNode().getContext('2d', { willReadFrequently: true });
            copy.drawImage(c, 0, 0);
            var d = copy.getImageData(0, 24 + Math.round((c.height - 60) / 2), c.width, 1).data;
            for (var i = c.width / 2; i < c.width; i++) {
              if (Math.hypot(d[4 * i] - 123, d[4 * i + 1] - 79, d[4 * i + 2] - 160) < 40 && d[4 * i + 3] > 90) at.push(i); }
            return at.length ? at[at.length - 1] - at[0] : 0; })()""")
    browser.prefer(reduced_motion="reduce", colour_scheme="light")
    for width in 200, 100, 50:  # between -451 and 2400 cm-1 and margins the axis has 1125 pixels, more or less
        found, expected = wide(width), width * 1125 / (2851 + 2 * max(85, 1.2 * width))
        assert abs(found - expected) < 2 + 0.03 * expected, (width, found, expected)
    assert browser.evaluate("document.getElementById('width-value').textContent").startswith("50 cm")
    assert wide(0) == 0
    browser.click("#heights label:last-of-type span")
    assert wide(200) == 0 and browser.evaluate("document.getElementById('width').disabled")
    browser.click("#heights label:first-of-type span")


def check_narrow_and_dark(browser, folder):
    light = pixels(browser, "spectrum")
    browser.prefer(reduced_motion="reduce", colour_scheme="dark")
    assert pixels(browser, "spectrum") != light, "dark mode"
    browser.prefer(colour_scheme="light")
    browser.call("Emulation.setTouchEmulationEnabled", enabled=True)
    browser.open(os.path.join(folder, "modes.html"), 375, 900)
    assert browser.evaluate("document.querySelector('.hint').innerText") == "drag to turn, pinch to zoom"
    browser.call("Emulation.setTouchEmulationEnabled", enabled=False)
    moving = pixels(browser)
    time.sleep(0.2)
    assert pixels(browser) != moving, "moves by itself"


def check_width(browser, folder, width):
    """Neither page nor table is wider than its window."""
    browser.open(os.path.join(folder, "modes.html"), width, 900)
    assert browser.evaluate("document.documentElement.scrollWidth") <= width
    assert browser.evaluate("(function (e) { return e.scrollWidth - e.clientWidth; })(document.querySelector('.scroll'))") <= 0


def check_policy(browser):
    """The page's own script runs; one that was not there when the page was made does not."""
    browser.evaluate("document.head.append(Object.assign(document.createElement('script'), {textContent: 'window.strange = 1'}))")
    assert browser.evaluate("window.strange") is None
    assert any("Content Security Policy" in text for text in browser.complaints())


with tempfile.TemporaryDirectory() as temporary, Browser(chromium, temporary) as browser:
    small = copy_of(example, temporary)
    large = os.path.join(temporary, "large")
    subprocess.run([make_jobs, large_natom, large], check=True)
    for folder, natom in (small, 4), (large, int(large_natom)):
        options = ("--isotope", "H=2.014101778") if folder is small else ()
        open_page(browser, folder, *options)
        check_picking(browser, 3 * natom)
        if folder is small:
            data = json.loads(export(program, folder, "json", *options))
            modes = data["projected"]
            check_sorting(browser, modes)
            check_values(browser, folder, data, *options)
            check_files(browser, folder, modes, *options)
            check_curve(browser)
            check_narrow_and_dark(browser, folder)
            check_sticks(browser, folder)
        else:
            colours = [browser.evaluate("getComputedStyle(document.querySelector('%s')).color" % place) for place in ("#warnings li", "h1", "#origin")]
            assert len(set(colours)) == 3, "a warning is to be seen"
        for width in 1280, 700, 375:
            check_width(browser, folder, width)
        assert browser.complaints() == [], browser.complaints()
        assert os.path.getsize(os.path.join(folder, "modes.html")) < 6e6
    check_policy(browser)
