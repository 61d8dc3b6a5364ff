// SPDX-License-Identifier: BSD-2-Clause
// types.ts - what a program of TypeScript may write, and what it may not. It is compiled, not run.
import { load, ZmxError, type Info, type Picture, type Zmx } from "zmxjpx";

const zmx: Zmx = await load({ simd: false });
const file = new Uint8Array(10);

const info: Info = zmx.info(file);
const across: number = info.tiles ? info.tiles.across : 1;
const bits: number[] = info.components.map((component) => component.bits);

const picture: Picture = zmx.decode(file.buffer, { window: { x: 0, y: 0, width: across, height: bits[0] ?? 1 }, reduce: 1 });
if (picture.data instanceof Uint16Array) picture.data.fill(65535);
const again: Uint8Array = zmx.encode(picture, { format: "jpeg2000", rate: [0.5, 2], tile: [256, 256] }).bytes;
zmx.encode(new ImageData(8, 8), { format: "png" });
zmx.transcode(again, { rotate: 90, trim: true });

const image = zmx.open(file);
image.decode({ component: 0 }).warnings.forEach((line: string) => console.log(line));
image.close();
const status: number | undefined = zmx.raw.functions["zmxiSub128_JPEG_8u16s_C1R"]?.(0, 0, 0, 0, 0);
console.log(status, zmx.raw.HEAPU8.length, zmx.memory);

try {
  zmx.reset();
} catch (error) {
  if (error instanceof ZmxError) console.log(error.message);
}

// @ts-expect-error JPEG has no levels
zmx.encode(picture, { format: "jpeg", levels: 3 });
// @ts-expect-error no such kind of file
zmx.encode(picture, { format: "gif" });
// @ts-expect-error a file is bytes
zmx.decode("photo.jpg");
// @ts-expect-error a window has four numbers
zmx.decode(file, { window: { x: 0, y: 0 } });
// @ts-expect-error what load() gives is awaited
load().decode(file);
