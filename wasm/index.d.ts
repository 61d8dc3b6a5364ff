// SPDX-License-Identifier: BSD-2-Clause
// zmxjpx in WebAssembly: what load() gives. All calls but load() are synchronous; run them in a worker where they must
// not keep a page from answering.

/** The kinds of files that are read. "jpeg2000" is JP2 files and bare codestreams, "pnm" is PBM, PGM, PPM and PAM. */
export type Format = "jpeg" | "jpeg2000" | "dds" | "tiff" | "png" | "bmp" | "pnm" | "pgx";

/** What the channels mean; a last "a" is alpha. Of CMYK, 0 is no ink. */
export type Colour = "grey" | "greya" | "rgb" | "rgba" | "cmyk" | "cmyka" | "other" | "othera";

/** What is wrong with a file, a picture or a choice, in the words of the codec. */
export class ZmxError extends Error {
  readonly name: "ZmxError";
}

/** Where the WebAssembly comes from, and which of its two builds. */
export interface LoadOptions {
  /**
   * The module itself, its bytes, or where it is. Without it the file beside index.js is read, or fetched. Who gives bytes or a
   * module decides with it which build is used; nothing is read or fetched then.
   */
  wasm?: ArrayBuffer | Uint8Array | WebAssembly.Module | URL | string;
  /** true: the build with vector instructions, false: the plain one. Without it: the first where the engine knows them. */
  simd?: boolean;
}

/** Pixels a unit. Where the unit is "none", only the ratio of x and y means something. */
export interface Resolution {
  x: number;
  y: number;
  unit: "none" | "inch" | "centimetre" | "metre";
}

export interface ComponentInfo {
  width: number;
  height: number;
  bits: number;
  signed: boolean;
  /** One sample stands for dx by dy pixels. */
  dx: number;
  dy: number;
}

/** What the headers of a file say. */
export interface Info {
  format: Format;
  width: number;
  height: number;
  components: ComponentInfo[];
  /** How the file stores its colours: "grey", "rgb", "ycbcr", "cmyk", "ycck", "palette" or "unknown", say. */
  colour: string;
  alpha: boolean;
  /** How often decode() can halve the picture: the largest `reduce`. */
  levels: number;
  /** Quality layers of JPEG2000; pictures of a DDS file (faces, elements of an array); 1 in all others. */
  layers: number;
  tiles: { width: number; height: number; across: number; down: number } | null;
  progressive: boolean;
  lossless: boolean;
  /** "baseline", "extended", "progressive" or "lossless" JPEG; the block format of DDS; the order of JPEG2000's packets; else "". */
  mode: string;
  /** The headers as lines, as the command prints them. */
  text: string;
  /** Sizes in bytes of what travels beside the samples; 0: there is none. */
  icc: number;
  exif: number;
  xmp: number;
  resolution: Resolution | null;
  /** 1 to 8, as in EXIF; 1: as the rows stand. */
  orientation: number;
  warnings: string[];
}

export interface DecodeOptions {
  /** A part of the picture, in pixels of its full size. JPEG2000 decodes nothing else; other formats cut it out. */
  window?: { x: number; y: number; width: number; height: number };
  /** How often the picture is halved. JPEG: up to 3. JPEG2000: as many levels as it has. DDS: the level of its chain. */
  reduce?: number;
  /** JPEG2000: decode this many quality layers. DDS: layer `layers` alone, from 0. */
  layers?: number;
  /** One component, or one channel of a decoded picture, alone. */
  component?: number;
  /** More pixels than that are an error. Without it 2^28. */
  maxPixels?: number;
  /** A damaged file is an error. */
  strict?: boolean;
  /** false: a damaged file is an error, as by strict. Without it what could be decoded is given, with warnings. */
  damage?: boolean;
}

/** A picture in memory: rows of interleaved samples without gaps. */
export interface Picture {
  width: number;
  height: number;
  channels: number;
  /** Bits of a sample, 1 to 16. Up to 8 bits `data` is bytes, from 9 it is 16-bit words. */
  bits: number;
  /** The file stores signed samples. They come here with 2^(bits-1) added. */
  signed: boolean;
  data: Uint8Array | Uint16Array;
  colour: Colour;
  icc?: Uint8Array;
  exif?: Uint8Array;
  xmp?: Uint8Array;
  resolution?: Resolution;
  /** 1 to 8, as in EXIF: the rows are as they stand in the file. */
  orientation: number;
  warnings: string[];
  /** Whether the warnings tell of damage. */
  damaged: boolean;
}

/** What encode() takes: a Picture, an ImageData, or anything with these. */
export interface PictureInput {
  width: number;
  height: number;
  /** Without it, as many as `data` holds. */
  channels?: number;
  /** Without it, 8 for bytes and 16 for words. */
  bits?: number;
  data: Uint8Array | Uint8ClampedArray | Uint16Array;
  /** Without it: grey, greya, rgb or rgba by the number of channels. */
  colour?: Colour;
  icc?: Uint8Array;
  exif?: Uint8Array;
  xmp?: Uint8Array;
  resolution?: Resolution;
  orientation?: number;
}

/** The choices of the command's subcommands; each format takes those that it knows, and refuses others. */
export type EncodeOptions = JpegOptions | Jpeg2000Options | DdsOptions | TiffOptions | PlainOptions;

export interface JpegOptions {
  format: "jpeg";
  /** 1 to 100; 75. */
  quality?: number;
  sampling?: "444" | "422" | "420";
  progressive?: boolean;
  optimize?: boolean;
  fast?: boolean;
  /** The lossless mode; a number is its predictor, 1 to 7. */
  lossless?: boolean | number;
  pointTransform?: number;
  restart?: number;
  rgb?: boolean;
  ycck?: boolean;
}

export interface Jpeg2000Options {
  format: "jpeg2000";
  /** The reversible filter: every sample comes back unless a rate is set. Without it: true where none of the next three is set. */
  lossless?: boolean;
  /** Bits a pixel; a list makes layers. */
  rate?: number | number[];
  /** How many times smaller than the samples. */
  ratio?: number | number[];
  /** dB. */
  psnr?: number | number[];
  /** Wavelet levels; 5. */
  levels?: number;
  /** Width and height of tiles; one number for squares. */
  tile?: number | [number, number];
  block?: number | [number, number];
  progression?: "LRCP" | "RLCP" | "RPCL" | "PCRL" | "CPRL";
  colourTransform?: boolean;
  /** A bare codestream without the boxes of JP2. */
  codestream?: boolean;
}

export interface DdsOptions {
  format: "dds";
  /** Without it "dxt5" where there is alpha, else "dxt1". */
  texture?: "dxt1" | "dxt3" | "dxt5" | "ycocg-dxt5";
  mips?: boolean;
}

export interface TiffOptions {
  format: "tiff";
  /** Without it "deflate". */
  compression?: "deflate" | "packbits";
}

export interface PlainOptions {
  format: "png" | "bmp" | "pnm";
}

/** The choices of `zmx jpeg transcode`: JPEG files into others, without another loss. */
export interface TranscodeOptions {
  /** Degrees to the right. */
  rotate?: 0 | 90 | 180 | 270;
  /** After the turn. */
  flip?: "horizontal" | "vertical";
  /** The turn that the EXIF asks for. */
  orient?: boolean;
  crop?: { x: number; y: number; width: number; height: number };
  /** Cut off parts of units that cannot be turned. */
  trim?: boolean;
  progressive?: boolean;
  restart?: number;
  grey?: boolean;
  /** Leave out what travels beside the samples. */
  strip?: boolean;
  maxPixels?: number;
}

export interface Encoded {
  bytes: Uint8Array;
  warnings: string[];
}

/** A file kept in the memory of the module, for decoding parts of it again and again. */
export interface OpenImage {
  readonly info: Info;
  decode(options?: DecodeOptions): Picture;
  /** Gives the memory back. Nothing else can be called then. */
  close(): void;
}

/**
 * The functions of the library by their names in C, on the memory of the module: pointers are numbers, structures that C passes
 * by value are pointers to them, and each function answers with its status. What malloc() gives is the caller's to free.
 */
export interface Raw {
  malloc(bytes: number): number;
  free(pointer: number): void;
  /** Views on the memory. A call may replace them: read them anew after each. */
  readonly HEAP8: Int8Array;
  readonly HEAPU8: Uint8Array;
  readonly HEAP16: Int16Array;
  readonly HEAPU16: Uint16Array;
  readonly HEAP32: Int32Array;
  readonly HEAPU32: Uint32Array;
  readonly HEAPF32: Float32Array;
  readonly HEAPF64: Float64Array;
  /** Bytes of a structure that programs hold themselves, by its name in C. */
  sizeOf(structure: string): number;
  readonly functions: Readonly<Record<string, (...values: number[]) => number>>;
}

export type Bytes = ArrayBuffer | ArrayBufferView;

export interface Zmx {
  /** Whether this is the build with vector instructions. */
  readonly simd: boolean;
  readonly version: string;
  info(bytes: Bytes): Info;
  decode(bytes: Bytes, options?: DecodeOptions): Picture;
  encode(picture: PictureInput, options: EncodeOptions): Encoded;
  transcode(bytes: Bytes, options?: TranscodeOptions): Encoded;
  open(bytes: Bytes): OpenImage;
  /** Bytes of the module's memory. It grows to what the largest picture needed and stays so until reset(). */
  readonly memory: number;
  /** A new instance with its first, small memory. Open images are closed; pointers into the memory are void. */
  reset(): void;
  readonly raw: Raw;
}

export function load(options?: LoadOptions): Promise<Zmx>;
