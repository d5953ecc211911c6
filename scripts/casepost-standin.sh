#!/bin/sh
# Stands in for the suite's load case post-processor: says what it was asked
# to post, from the response.cnt that TreModal writes just before starting it.
cnt="response.cnt"
if [ -f "$cnt" ]; then
  model=$(sed -n 1p "$cnt" | tr -d '\r')
  case=$(sed -n 2p "$cnt" | tr -d '\r')
  echo "casepost (stand-in): asked to post results case $case of model $model"
else
  echo "casepost (stand-in): no response.cnt in $(pwd)"
fi
