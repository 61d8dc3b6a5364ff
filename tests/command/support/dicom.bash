# SPDX-License-Identifier: BSD-2-Clause
# dicom.bash - JPEG files and raw samples in and out of DICOM files, for the DCMTK programs.

# dicom OUT W H CHANNELS BITS-ALLOCATED BITS SYNTAX PIXELS: a DICOM file; PIXELS are its last lines
dicom() {
    cat >"$1.txt" <<T
(0002,0010) UI =$7
(0008,0016) UI =SecondaryCaptureImageStorage
(0008,0018) UI [1.2.3]
(0028,0002) US $4
(0028,0004) CS [$([ "$4" = 1 ] && echo MONOCHROME2 || echo RGB)]
$([ "$4" = 1 ] || echo "(0028,0006) US 0")
(0028,0010) US $3
(0028,0011) US $2
(0028,0100) US $5
(0028,0101) US $6
(0028,0102) US $(($6 - 1))
(0028,0103) US 0
$8
T
    sed -i '/^$/d' "$1.txt"
    dump2dcm -q "$1.txt" "$1"
}
even() { [ $(($(wc -c <"$1") % 2)) = 0 ] || printf '\0' >>"$1"; }
allocated() { [ "$1" = 8 ] && echo 8 || echo 16; }

# dicom_of_pnm PNM OUT W H CHANNELS BITS: of a binary PGM or PPM; words are little-endian there
dicom_of_pnm() {
    local bytes=$(($3 * $4 * $5 * ($(allocated "$6") / 8)))
    if [ "$6" = 8 ]; then tail -c $bytes "$1" >samples.raw; else tail -c $bytes "$1" | dd conv=swab status=none >samples.raw; fi
    even samples.raw
    dicom "$2" "$3" "$4" "$5" "$(allocated "$6")" "$6" LittleEndianExplicit \
        "(7fe0,0010) O$([ "$6" = 8 ] && echo B || echo W) =samples.raw"
}
# dicom_of_jpeg JPEG OUT W H CHANNELS BITS SYNTAX
dicom_of_jpeg() {
    cp "$1" fragment.jpg
    even fragment.jpg
    dicom "$2" "$3" "$4" "$5" "$(allocated "$6")" "$6" "$7" "(7fe0,0010) OB (PixelSequence)
(fffe,e000) pi
(fffe,e000) pi =fragment.jpg
(fffe,e0dd) na"
}
# pixels DICOM: the last item of its pixel data: the samples, or the JPEG file
pixels() {
    rm -rf items
    mkdir items
    dcmdump -q +W items "$1" >/dev/null && cat "$(ls items/* | sort -V | tail -n 1)"
}
# pnm_of_dicom DICOM OUT W H CHANNELS BITS
pnm_of_dicom() {
    local bytes=$(($3 * $4 * $5 * ($(allocated "$6") / 8)))
    printf 'P%d %d %d %d\n' "$([ "$5" = 1 ] && echo 5 || echo 6)" "$3" "$4" $(((1 << $6) - 1)) >"$2"
    if [ "$6" = 8 ]; then pixels "$1" | head -c $bytes >>"$2"; else pixels "$1" | head -c $bytes | dd conv=swab status=none >>"$2"; fi
}
