// jpegtranscode.cpp - zmx jpeg transcode: JPEG files coded, turned and cut anew without any loss.
//
// The codec reads what it has written, and both ends tell their coefficients by a digest: should they differ, no file is
// kept. It is made in memory for that, as large as the file that is read.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/jpeg.h"
#include "zmx/files.h"
#include "zmx/jpeg.h"

#include <CLI/CLI.hpp>
#include <cstdio>

namespace {

namespace jpeg = codecs::jpeg;
using command::Run;

// What is not an option of the codec as it stands.
struct Arguments {
    command::Files files;
    std::string scans, flip;
    int rotate = 0;
    std::vector<int> part;
    jpeg::TranscodeOptions options;
    bool digest = false;
};

// A turn to the right by so many degrees, and a mirror behind it.
codecs::Turn turnOf(int degrees, const std::string& flip) {
    using codecs::Turn;
    // Each mirror behind a turn is one of the eight turns again.
    static constexpr Turn turns[3][4] = {
        {Turn::none, Turn::quarter, Turn::half, Turn::threeQuarters},
        {Turn::mirror, Turn::transpose, Turn::flip, Turn::transverse},  // left and right exchanged
        {Turn::flip, Turn::transverse, Turn::mirror, Turn::transpose}}; // top and bottom
    return turns[flip.empty() ? 0 : flip == "horizontal" ? 1 : 2][degrees / 90];
}

// The file is handed on when nothing more can be wrong with it.
void transcode(Run& run, const Arguments& args) {
    const jpeg::Transcoded result =
        codecs::named(run.inName(), [&] { return jpeg::transcode(run.bytesIn(), args.options); });
    run.warn(result.warnings);
    if (args.digest)
        std::printf("before %016llx\nafter %016llx\n", static_cast<unsigned long long>(result.before),
                    static_cast<unsigned long long>(result.after));
    // This cannot happen; a file that is taken for lossless must not rest on that.
    if (result.before != result.after) throw codecs::FileError(run.inName() + ": the coefficients have changed");
    run.bytesOut().write(result.file);
}

void run(Arguments& args) {
    if (!args.scans.empty()) args.options.scans = command::jpegText(args.scans);
    args.options.turn = turnOf(args.rotate, args.flip);
    if (!args.part.empty()) args.options.part = jpeg::Part{args.part[0], args.part[1], args.part[2], args.part[3]};
    args.files.each([&](Run& job) { transcode(job, args); });
}

} // namespace

void command::addJpegTranscode(CLI::App& app) {
    auto* c = app.add_subcommand("transcode", "Code the coefficients of a JPEG file anew, without any loss");
    const auto args = std::make_shared<Arguments>();
    jpeg::TranscodeOptions& o = args->options;
    args->files.addTo(*c, "a JPEG file, sequential or progressive", "the JPEG file, with Huffman tables made for it",
                      ".jpg");
    auto* progressive = c->add_flag("-p,--progressive", o.progressive, "in the usual progressive scans");
    c->add_option("--scans", args->scans, "a file with a scan script")->type_name("FILE")->excludes(progressive);
    c->add_option("--restart", o.restart, "MCUs in a restart interval; 0: none; else as IN has it")
        ->check(CLI::Range(0, 65535));
    auto* rotate = c->add_option("--rotate", args->rotate, "turn to the right by 90, 180 or 270 degrees")
                       ->check(CLI::IsMember({90, 180, 270}));
    auto* flip = c->add_option("--flip", args->flip, "mirror, behind a turn: horizontal exchanges left and right")
                     ->check(CLI::IsMember({"horizontal", "vertical"}));
    // The EXIF says which way: a turn of one's own beside it would contradict.
    c->add_flag("--orient", o.upright, "turn and mirror as the orientation of the EXIF says")
        ->excludes(rotate)
        ->excludes(flip);
    c->add_flag("--trim", o.trim, "cut off the part of a unit with which a side would begin that is turned");
    c->add_option("-c,--crop", args->part,
                  "this part of the turned picture alone, from the unit on in which it begins: X,Y,WIDTH,HEIGHT")
        ->delimiter(',')
        ->expected(4);
    c->add_flag("--gray", o.grey, "keep the luma alone");
    c->add_flag("--strip", o.strip, "leave out colour profile, EXIF, XMP, resolution and comments");
    c->add_option("--max-pixels", o.maxPixels, "refuse larger pictures")->capture_default_str();
    c->add_flag("--digest", args->digest, "print digests of the coefficients that were to be written and that were");
    c->footer("Examples:\n"
              "  zmx jpeg transcode photo.jpg smaller.jpg --progressive\n"
              "  zmx jpeg transcode DSC*.jpg -o upright/ --orient --trim\n"
              "  zmx jpeg transcode photo.jpg part.jpg --crop 160,320,640,480\n"
              "  zmx jpeg transcode photo.jpg sequential.jpg --digest");
    c->callback([args] { run(*args); });
}
