# Finds libdispatch (headers <dispatch/dispatch.h> and libdispatch.so).
# Looks in the Swift toolchain first (where this project's machines carry it),
# then in the usual system places. Defines Dispatch::Dispatch.
set(_quorin_dispatch_roots
    ${DISPATCH_ROOT} $ENV{DISPATCH_ROOT}
    /opt/swift/usr /usr/local /usr)
find_path(Dispatch_INCLUDE_DIR
    NAMES dispatch/dispatch.h
    PATHS ${_quorin_dispatch_roots}
    PATH_SUFFIXES lib/swift include
    NO_DEFAULT_PATH)
find_library(Dispatch_LIBRARY
    NAMES dispatch
    PATHS ${_quorin_dispatch_roots}
    PATH_SUFFIXES lib/swift/linux lib lib/x86_64-linux-gnu lib64
    NO_DEFAULT_PATH)
find_library(Dispatch_BLOCKS_LIBRARY
    NAMES BlocksRuntime
    PATHS ${_quorin_dispatch_roots}
    PATH_SUFFIXES lib/swift/linux lib lib/x86_64-linux-gnu lib64
    NO_DEFAULT_PATH)

string(JOIN ", " _quorin_dispatch_where ${_quorin_dispatch_roots})
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Dispatch
    REQUIRED_VARS Dispatch_LIBRARY Dispatch_INCLUDE_DIR
    REASON_FAILURE_MESSAGE
      "libdispatch is required. Looked for dispatch/dispatch.h and libdispatch.so under ${_quorin_dispatch_where} (suffixes lib/swift, include, lib/swift/linux, lib). Install the Swift toolchain at /opt/swift or set DISPATCH_ROOT.")

if(Dispatch_FOUND AND NOT TARGET Dispatch::Dispatch)
    add_library(Dispatch::Dispatch SHARED IMPORTED)
    set_target_properties(Dispatch::Dispatch PROPERTIES
        IMPORTED_LOCATION "${Dispatch_LIBRARY}"
        INTERFACE_INCLUDE_DIRECTORIES "${Dispatch_INCLUDE_DIR}")
    if(Dispatch_BLOCKS_LIBRARY)
        set_property(TARGET Dispatch::Dispatch APPEND PROPERTY
            INTERFACE_LINK_LIBRARIES "${Dispatch_BLOCKS_LIBRARY}")
    endif()
    get_filename_component(Dispatch_LIBRARY_DIR "${Dispatch_LIBRARY}" DIRECTORY)
endif()
mark_as_advanced(Dispatch_INCLUDE_DIR Dispatch_LIBRARY Dispatch_BLOCKS_LIBRARY)
