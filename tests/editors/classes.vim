" Writes a line for each line of the file that is open: one letter a character, telling its class.
let s:letters = {
      \ 'kelShebang': '!', 'kelComment': 'c', 'kelHidden': 'c', 'kelString': 's', 'kelEscape': 's',
      \ 'kelNumber': '1', 'kelSigned': '1', 'kelType': 't', 'kelFunction': 'f', 'kelName': 'n',
      \ 'kelDefined': 'd', 'kelOperator': 'o', 'kelComparison': '<', 'kelBlock': '{',
      \ 'kelUnknown': '?', 'kelUnknownPart': '?', 'kelConstant': ' ', '': ' '}

let s:lines = []
for s:row in range(1, line('$'))
  let s:line = ''
  for s:column in range(1, strlen(getline(s:row)))
    let s:name = synIDattr(synID(s:row, s:column, 0), 'name')
    let s:line .= getline(s:row)[s:column - 1] =~# '\s' ? ' ' : s:letters[s:name]
  endfor
  call add(s:lines, s:line)
endfor
call writefile(s:lines, $KEL_CLASSES)
quitall!
