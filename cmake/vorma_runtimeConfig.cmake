# find_package(vorma_runtime): the target vorma::runtime.
include(CMakeFindDependencyMacro)
find_dependency(Threads)
include(${CMAKE_CURRENT_LIST_DIR}/vorma_runtimeTargets.cmake)
