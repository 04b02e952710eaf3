" Batch files have the same ending: they begin with a line that no command file has.
autocmd BufNewFile,BufRead *.cmd
      \ if getline(1) !~? '^\s*\(@\=echo\>\|@\=rem\>\|@\=setlocal\>\|::\|/\*\)' | set filetype=mox | endif
autocmd BufNewFile,BufRead *.fmt set filetype=mox
autocmd FileType mox setlocal commentstring=*\ %s
