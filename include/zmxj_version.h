/* zmxj_version.h - the version of the headers, for the preprocessor. zmxjGetLibVersion() has that of the loaded library. */
#ifndef ZMXJ_VERSION_H
#define ZMXJ_VERSION_H

#define ZMXJ_VERSION_MAJOR 6
#define ZMXJ_VERSION_MINOR 1
#define ZMXJ_VERSION_MAJOR_BUILD 137
#define ZMXJ_VERSION_BUILD 823
#define ZMXJ_VERSION_STRING "6.1 build 137.56"

/* Whether the headers are of version major.minor or a later one. */
#define ZMXJ_VERSION_AT_LEAST(major, minor)                                                                            \
    (ZMXJ_VERSION_MAJOR > (major) || (ZMXJ_VERSION_MAJOR == (major) && ZMXJ_VERSION_MINOR >= (minor)))

#endif /* ZMXJ_VERSION_H */
