autocmd BufRead,BufNewFile *.3dc setfiletype 3dc
