" Vim syntax file for programs of the calculator kelcalc (*.3dc).
" To use it, copy the folders ftdetect and syntax into ~/.vim.

if exists('b:current_syntax')
  finish
endif

syntax case match

" Where several begin at the same place, the one that is defined last wins.
syntax match kelUnknown /[!#$%&'*+\-/:<=>?@\\^`{|}~]\+/
syntax match kelOperator /\%(##\?\|??\?\|\\\\\?\|''\?\|:\|>>\|<<\|[~+\-*%/^$@|]\)[!#$%&'*+\-/:<=>?@\\^`{|}~]\@!/
syntax match kelComparison /\%(<=\?\|>=\?\|==\?\|\~==\?\)[!#$%&'*+\-/:<=>?@\\^`{|}~]\@!/
syntax match kelBlock /\%({\|}}\?\)[!#$%&'*+\-/:<=>?@\\^`{|}~]\@!/

syntax match kelName /\a\w*/
syntax match kelDefined /\a\w*\ze[[:space:],]\+:[!#$%&'*+\-/:<=>?@\\^`{|}~]\@!/
syntax match kelUnknown /\a\w*(\@=/
syntax match kelUnknown /;\w*/
syntax match kelFunction /;\%(v\|p\|m\|u\|n\|t\|q\|r\|s\|w\|x\|y\|z\|a\|sin\|cos\|tan\|asin\|acos\|atan\|atan2\|ln\|exp\|sqrt\|write\|read\|build\)\>/

syntax match kelNumber /-\?\%(\d\+\.\?\d*\|\.\d\+\)\%([eE][+-]\?\d\+\)\?/
syntax match kelUnknownPart /[^[:space:],)[]\+/ contained
syntax match kelSigned /[+-]\?\%(\d\+\.\?\d*\|\.\d\+\)\%([eE][+-]\?\d\+\)\?/ contained
syntax region kelConstant matchgroup=kelType start=/[vpmqrs](/ end=/)/
      \ contains=kelUnknownPart,kelSigned,kelComment

syntax match kelEscape /\\./ contained
syntax region kelString start=/"/ end=/"/ contains=kelEscape
syntax match kelHidden /\\./ contained
syntax region kelComment start=/\[/ end=/\]/ contains=kelComment,kelHidden
syntax match kelShebang /\%^#!.*/

highlight default link kelBlock Conditional
highlight default link kelComment Comment
highlight default link kelComparison Conditional
highlight default link kelDefined Identifier
highlight default link kelEscape SpecialChar
highlight default link kelFunction Function
highlight default link kelNumber Number
highlight default link kelOperator Operator
highlight default link kelShebang PreProc
highlight default link kelSigned Number
highlight default link kelString String
highlight default link kelType Type
highlight default link kelUnknown Error
highlight default link kelUnknownPart Error

let b:current_syntax = '3dc'
