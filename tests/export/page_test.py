"""The page in a headless Chromium: what it shows, saves and does not ask the network for.

usage: page_test.py ZANDOR_EXPORT MAKE_JOBS LARGE JOBDIRECTORY

LARGE is the number of atoms of the large molecule.
"""
import json
import os
import shutil
import subprocess
import sys
import tempfile
import time

from browser import Browser
from common import copy_of, export, skip

program, make_jobs, large_natom, example = sys.argv[1:5]
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
    browser.click("#arrows")
    assert pixels(browser) != rest, "arrows"
    browser.click("#sets label:last-of-type span")
    assert browser.evaluate("document.querySelector('[name=set]:checked').value") == "unprojected"
    browser.click("#sets label:first-of-type span")


def check_sorting(browser, modes):
    browser.click("#modes th:nth-child(3) button")
    order = browser.evaluate(MODES)
    masses = [modes["reduced_masses"][mode - 1] for mode in order]
    assert masses == sorted(masses, reverse=True) and sorted(order) == list(range(1, len(order) + 1))
    browser.click("#modes th:nth-child(1) button")


def check_files(browser, folder, modes, *options):
    """The files of the two buttons hold the numbers of the JSON."""
    browser.call("Browser.setDownloadBehavior", behavior="allow", downloadPath=folder)
    count = len(modes["frequencies"])
    browser.click("#csv")
    browser.click("#xyz")
    for name in ("modes-projected.csv", "mode-%d.xyz" % count):
        for _ in range(100):
            if os.path.exists(os.path.join(folder, name)):
                break
            time.sleep(0.1)
    with open(os.path.join(folder, "modes-projected.csv")) as file:
        lines = file.read().split("\n")[:-1]
    assert lines[0] == "# masses changed: all H 2.014101778", lines[0]
    names, *rows = (line.split(",") for line in lines if not line.startswith("#"))
    assert [float(row[1]) for row in rows] == modes["frequencies"]
    assert all(len(row) == len(names) for row in rows)
    terms = [[row[names.index(name)] for name in ("dmu_dq_au", "strength_0-1_au")] for row in rows]
    assert all(abs(float(p) ** 2 / 2 - float(q)) < 1e-15 for p, q in terms if q)
    assert sum(q != "" for _, q in terms) == count - 7, "all but rigid motions and the imaginary mode"
    with open(os.path.join(folder, "mode-%d.xyz" % count)) as file:
        frame = file.read().split("\n")
    wanted = export(program, folder, "xyz", "--mode", str(count), *options).split("\n")
    assert frame[0] == wanted[0] and "mode#=%d frequency_cm-1=%r" % (count, modes["frequencies"][-1]) in frame[1]
    assert frame[1].endswith(' note="masses changed: all H 2.014101778"'), frame[1]
    for mine, theirs in zip(frame[2:-1], wanted[2:-1]):
        mine, theirs = mine.split(), theirs.split()
        assert mine[0] == theirs[0] and all(abs(float(p) - float(q)) < 2e-5 for p, q in zip(mine[1:], theirs[1:]))


def check_narrow_and_dark(browser, folder):
    light = pixels(browser, "spectrum")
    browser.prefer(reduced_motion="reduce", colour_scheme="dark")
    assert pixels(browser, "spectrum") != light, "dark mode"
    browser.prefer(colour_scheme="light")
    browser.open(os.path.join(folder, "modes.html"), 420, 900)
    assert browser.evaluate("document.documentElement.scrollWidth") <= 420
    moving = pixels(browser)
    time.sleep(0.2)
    assert pixels(browser) != moving, "moves by itself"


with tempfile.TemporaryDirectory() as temporary, Browser(chromium, temporary) as browser:
    small = copy_of(example, temporary)
    large = os.path.join(temporary, "large")
    subprocess.run([make_jobs, large_natom, large], check=True)
    for folder, natom in (small, 4), (large, int(large_natom)):
        options = ("--isotope", "H=2.014101778") if folder is small else ()
        open_page(browser, folder, *options)
        check_picking(browser, 3 * natom)
        if folder is small:
            modes = json.loads(export(program, folder, "json", *options))["projected"]
            check_sorting(browser, modes)
            check_files(browser, folder, modes, *options)
            check_narrow_and_dark(browser, folder)
        assert browser.complaints() == [], browser.complaints()
        assert os.path.getsize(os.path.join(folder, "modes.html")) < 6e6
