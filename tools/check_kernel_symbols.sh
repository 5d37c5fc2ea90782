#!/bin/sh
# check_kernel_symbols.sh NAMESPACE OBJECT...: fails when kernel objects compiled for one instruction set define a shareable
# (weak) symbol outside their own namespace. The linker may take such a copy for the whole program, which then needs that
# instruction set everywhere.
namespace=$1
shift
leaks=$(nm -C --defined-only "$@" | grep -E ' [WVu] ' | grep -v -e "zentrix::kernels::$namespace::" -e ' DW.ref.')
[ -z "$leaks" ] || { echo "$leaks" | sort -u; exit 1; }
