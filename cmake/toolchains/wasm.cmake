# SPDX-License-Identifier: BSD-2-Clause
# WebAssembly, by emscripten; node runs what it makes.
find_program(ZMX_EMCC emcc REQUIRED)
get_filename_component(zmx_emscripten ${ZMX_EMCC} REALPATH)
get_filename_component(zmx_emscripten ${zmx_emscripten} DIRECTORY)
include(${zmx_emscripten}/cmake/Modules/Platform/Emscripten.cmake)
