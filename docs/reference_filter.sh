#!/bin/sh
# Doxygen's filter of headers: what a header declares belongs to the group of its folder; docs/reference.dox names the groups.
folder=${1%/*}
parent=${folder%/*}
group=${parent##*/}_${folder##*/}
sed -e "/^namespace qz.*{\$/s:\$: /** @addtogroup $group */ /** @{ */:" -e '/^}  .. namespace qz/s:^:/** @} */ :' "$1"
