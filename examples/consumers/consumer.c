/* consumer.c - the smallest program on libzmxjpx: it tells the version of the loaded library, and takes a flat block of samples
 * through the forward and the inverse DCT. Succeeds when the samples come back. */
/* SPDX-License-Identifier: BSD-2-Clause */
#include <stdio.h>
#include <string.h>
#include <zmxcore.h>
#include <zmxj.h>

int main(void) {
    Zmx8u samples[64], raw[64], back[64];
    Zmx16u fwd[64], inv[64];
    Zmx16s coef[64];
    ZmxStatus status;
    memset(samples, 200, sizeof samples);
    memset(raw, 8, sizeof raw);
    zmxiQuantFwdTableInit_JPEG_8u16u(raw, fwd);
    zmxiQuantInvTableInit_JPEG_8u16u(raw, inv);
    status = zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(samples, 8, coef, fwd);
    if (status == zmxStsNoErr) status = zmxiDCTQuantInv8x8LS_JPEG_16s8u_C1R(coef, back, 8, inv);
    printf("%s, headers %d.%d, %d threads\n", zmxjGetLibVersion()->Version, ZMXJ_VERSION_MAJOR, ZMXJ_VERSION_MINOR,
           ownGetNumThreads());
    if (!ZMXJ_VERSION_AT_LEAST(6, 1) || strcmp(ZMXJ_VERSION_STRING, zmxjGetLibVersion()->Version) != 0) return 2;
    return status != zmxStsNoErr || memcmp(samples, back, sizeof back) != 0;
}
