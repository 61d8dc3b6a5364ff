# SPDX-License-Identifier: BSD-2-Clause
"""page.py: the page of the demo, from page.html, page.css and page.js beside it. It needs no network and no server."""
import html
import pathlib
import string

import chart
import measure
import pixels

HERE = pathlib.Path(__file__).resolve().parent


def told(result):
    """A line on a result."""
    return f"{result.codec}, {result.label}: {result.size:,} bytes, {result.rate:.2f} bits a pixel, {result.psnr:.2f} dB"


def choice(photo, picture, checked):
    """A button that shows one of the decoded pictures."""
    result = picture.result
    return (f'<label class="choice"><input type="radio" name="{photo}"{" checked" if checked else ""} '
            f'data-folder="{picture.folder}/" data-told="{html.escape(told(result))}" '
            f'data-where="{html.escape(picture.where)}"><span>{html.escape(result.codec)}, {html.escape(result.label)}</span></label>')


def viewer(photo):
    """The picture with its slider, the crop where most went wrong, and the map of differences."""
    name, (width, height) = photo.name, photo.shape
    at = next((i for i, picture in enumerate(photo.pictures) if picture.result.setting == 25), 0)
    first = photo.pictures[at]
    sized = f'width="{width}" height="{height}"'
    closer = "".join(
        f'<figure><img class="{part}" src="{first.folder}/closer-{part}.png" alt="{part}, magnified"><figcaption>{part}</figcaption></figure>'
        for part in ("original", "decoded", "difference"))
    return f"""<fieldset><legend>What to look at</legend>
{"".join(choice(name, picture, picture is first) for picture in photo.pictures)}
<button type="button">Fit to the window</button></fieldset>
<div class="viewer"><div class="frame"><div class="stage" style="--at:50%">
<img class="original" src="{name}/original.png" {sized} alt="{name}, the original">
<img class="decoded" src="{first.folder}/decoded.png" {sized} alt="{name}, decoded"><div class="line"></div>
<b>original</b><b>decoded</b></div></div>
<label class="slider"><span>Original</span><input type="range" min="0" max="100" step="1" value="50"
aria-label="where the original ends and the decoded picture begins"><span>Decoded</span></label></div>
<p class="told" aria-live="polite">{html.escape(told(first.result))}</p>
<h3>Where it differs most</h3>
<div class="closer">{closer}</div>
<p class="where">{html.escape(first.where)}</p>
<h3>The difference, {pixels.AMPLIFY} times as bright</h3>
<figure><img class="map" src="{first.folder}/difference.png" {sized} style="width:auto;max-width:100%" alt="map of the differences">
<figcaption class="told"></figcaption></figure>"""


def point(result):
    return result.rate, result.psnr, result.label


def curves(photo):
    """A chart for each codec: ours and the peer's; of textures our files as the peer decodes them, and those of YCoCg."""
    for codec in measure.CODECS:
        results = [r for r in photo.results if r.codec == codec.name]
        ours = [r for r in results if r.coder == "zmx"]
        lines = [("zmx", [point(r) for r in ours if r.setting != measure.YCOCG]),
                 (codec.peer, [point(r) for r in results if r.coder == codec.peer])]
        if codec is measure.DXT:
            lines += [("zmx, decoded by the peer", [(r.rate, r.by_peer, r.label) for r in ours if r.by_peer]),
                      ("zmx, YCoCg in DXT5", [point(r) for r in ours if r.setting == measure.YCOCG])]
        lines = [line for line in lines if line[1]]
        yield f"<figure>{chart.chart(f'{photo.name}: PSNR of {codec.name} by bits a pixel', lines)}<figcaption>{codec.name}</figcaption></figure>"


def bar(value, most, text):
    """A cell whose ground shows how much it is."""
    return f'<td class="bar" style="--share:{100 * value / most:.0f}%">{text}</td>'


def costs(photo):
    """Time and memory, ours above the peer's."""
    rows = []
    for codec in measure.CODECS:
        pair = [r for r in photo.results if r.codec == codec.name and r.setting == codec.timed]
        time = max(max(r.encode, r.decode) for r in pair)
        memory = max(max(r.encode_memory, r.decode_memory) for r in pair)
        for r in pair:
            cells = [bar(t, time, f"{1000 * t:.0f} ms") for t in (r.encode, r.decode)]
            cells += [bar(m, memory, f"{m:.1f} MB") for m in (r.encode_memory, r.decode_memory)]
            ours = r.coder == "zmx"
            rows.append(f'<tr{"" if ours else " class=peer"}><td>{codec.name}, {html.escape(r.label)}</td><td>{r.coder}</td>{"".join(cells)}</tr>')
    return ("<table><tr><th>codec</th><th>by</th><th>encoding</th><th>decoding</th><th>memory, encoding</th>"
            f"<th>memory, decoding</th></tr>{''.join(rows)}</table>")


def figures(photo):
    """All that was measured."""
    rows = []
    for r in photo.results + photo.exact:
        by_peer = "" if r.by_peer is None else f"{r.by_peer:.2f}"
        rows.append(f"<tr><td>{html.escape(r.label if r in photo.exact else f'{r.codec}, {r.label}')}</td><td>{r.coder}</td>"
                    f"<td>{r.size:,}</td><td>{r.rate:.2f}</td><td>{r.psnr:.2f}</td><td>{by_peer}</td><td>{1000 * r.encode:.0f}</td>"
                    f"<td>{1000 * r.decode:.0f}</td><td>{r.encode_memory:.1f}</td><td>{r.decode_memory:.1f}</td></tr>")
    return ("<table><tr><th>codec</th><th>by</th><th>bytes</th><th>bits a pixel</th><th>PSNR, dB</th><th>by the peer's decoder</th>"
            f"<th>encoding, ms</th><th>decoding, ms</th><th>MB</th><th>MB</th></tr>{''.join(rows)}</table>")


def section(photo):
    return f"""<section class="photograph" id="{photo.name}">
<h2>{photo.name}</h2>
{viewer(photo)}
<h3>Quality by size</h3>
<div class="charts">{"".join(curves(photo))}</div>
<h3>Time and memory</h3>
<div class="wide">{costs(photo)}</div>
<details><summary>All figures</summary><div class="wide">{figures(photo)}</div></details>
</section>"""


def write(folder, photos, version, rounds):
    """index.html in the folder, beside the pictures."""
    peers = [codec.peer for codec in measure.CODECS if measure.peer_is_there(codec)]
    text = string.Template((HERE / "page.html").read_text()).substitute(
        style=(HERE / "page.css").read_text(), script=(HERE / "page.js").read_text(),
        peers=", ".join(peers) or "none is installed here", version=html.escape(version), processors=measure.processors(),
        rounds="one" if rounds == 1 else rounds, amplify=pixels.AMPLIFY,
        links="".join(f'<a href="#{photo.name}">{photo.name}</a>' for photo in photos) + '<a href="#about">how it was measured</a>',
        photographs="\n".join(section(photo) for photo in photos))
    (folder / "index.html").write_text(text)
