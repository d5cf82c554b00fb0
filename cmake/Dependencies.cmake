# Every library the project uses, found once. Which folder links which stands in cmake/Module.cmake.

find_package(Qt6 6.4 REQUIRED COMPONENTS Core DBus Gui Widgets Network PrintSupport Test)
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(JPEG REQUIRED)
find_package(PNG REQUIRED)
find_package(ZLIB REQUIRED)
find_package(TIFF REQUIRED)
find_package(GIF REQUIRED)
find_package(Freetype REQUIRED)
find_package(Fontconfig REQUIRED)
pkg_check_modules(EXIV2 REQUIRED IMPORTED_TARGET exiv2)
pkg_check_modules(DEFLATE REQUIRED IMPORTED_TARGET libdeflate)
pkg_check_modules(HWY REQUIRED IMPORTED_TARGET libhwy)
pkg_check_modules(SODIUM REQUIRED IMPORTED_TARGET libsodium)

# The two OpenCV packages in use bring no CMake configuration of their own.
find_path(OPENCV_INCLUDE opencv2/imgproc.hpp PATHS /usr/include/opencv4 REQUIRED)
find_library(OPENCV_CORE opencv_core REQUIRED)
find_library(OPENCV_IMGPROC opencv_imgproc REQUIRED)
add_library(kvn_opencv INTERFACE)
target_include_directories(kvn_opencv SYSTEM INTERFACE ${OPENCV_INCLUDE})
target_link_libraries(kvn_opencv INTERFACE ${OPENCV_IMGPROC} ${OPENCV_CORE})
