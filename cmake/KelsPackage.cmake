# Debian packages by CPack, one for each component.  `./package` builds those of both ABIs.
# i386 has no programs here: they would need the 32-bit sound and graphics libraries to build.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kels)
set(CPACK_PACKAGE_VENDOR "libkelsra6")
set(CPACK_PACKAGE_CONTACT "libkelsra6 maintainers <maintainers@users.noreply.libkelsra6.example>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
if(KELS_ARCH STREQUAL "i386")
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
else()
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE amd64)
endif()
set(library_package libkelsra6-${PROJECT_VERSION_MAJOR})

# The same bytes for both ABIs, whose packages may be installed side by side.
configure_file(packaging/changelog.in packaging/changelog @ONLY)
execute_process(COMMAND gzip -9nc ${PROJECT_BINARY_DIR}/packaging/changelog
                OUTPUT_FILE ${PROJECT_BINARY_DIR}/packaging/changelog.gz)

# kels_package(COMPONENT PACKAGE SECTION DEPENDS SUMMARY TEXT): a package of what is installed for the component.
set(CPACK_COMPONENTS_ALL)
macro(kels_package component package section depends summary text)
  string(TOUPPER ${component} upper)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${depends}")
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${summary}\n${text}")
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/copyright ${PROJECT_BINARY_DIR}/packaging/changelog.gz
          DESTINATION share/doc/${package} COMPONENT ${component})
endmacro()

kels_package(library ${library_package} libs "libc6 (>= 2.35)"
  "signal processing and pattern recognition for speech"
  "Vector kernels, FFT, filter banks, cepstra, linear prediction, voice
activity, Gaussian and mixture scores, codebooks, time warping, model
training, noise suppression and resampling behind a C interface. On
amd64 the package holds builds for newer processors beside the one that
runs everywhere; the loader picks the best.")
kels_package(development libkelsra6-dev libdevel "${library_package} (= ${PROJECT_VERSION})"
  "signal processing and pattern recognition for speech - headers"
  "Headers, the static library, the CMake package and the pkg-config file
of libkelsra6.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_MULTIARCH same)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_MULTIARCH same)
file(WRITE ${PROJECT_BINARY_DIR}/packaging/shlibs
     "libkelsra6 ${PROJECT_VERSION_MAJOR} ${library_package} (>= ${PROJECT_VERSION})\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/triggers
                                               ${PROJECT_BINARY_DIR}/packaging/shlibs)

if(KELS_EXAMPLES)
  kels_package(tools kels-tools sound
    "${library_package} (>= ${PROJECT_VERSION}), libc6 (>= 2.35), libgcc-s1, libstdc++6 (>= 12), libsndfile1, libcairo2"
    "programs on libkelsra6: word recogniser, noise suppression, resampling"
    "The command kels starts them: kels words recognises isolated words, kels
denoise takes steady noise out of recordings, kels resample converts
sampling rates. kels --help lists them all.")
endif()
if(EXISTS ${PROJECT_BINARY_DIR}/docs/html)
  kels_package(manual kels-doc doc "" "manual of libkelsra6"
    "The manual in HTML: a page for each family of functions, an index of all
functions, guides, and what was measured.")
  set(CPACK_DEBIAN_MANUAL_PACKAGE_ARCHITECTURE all)
  install(DIRECTORY ${PROJECT_BINARY_DIR}/docs/html DESTINATION share/doc/kels-doc COMPONENT manual)
endif()
if(EXISTS ${PROJECT_BINARY_DIR}/python-package)
  kels_package(python python3-kels python
    "${library_package} (>= ${PROJECT_VERSION}), libc6 (>= 2.35), python3, python3-numpy, python3-cffi-backend"
    "speech signal processing on NumPy arrays (Python 3)"
    "The functions of libkelsra6 from Python: features, voice activity,
resampling, mixture models, codebooks and warping on NumPy arrays, and
every exported function by its name.")
  install(DIRECTORY ${PROJECT_BINARY_DIR}/python-package/ DESTINATION lib/python3/dist-packages COMPONENT python)
endif()
include(CPack)
