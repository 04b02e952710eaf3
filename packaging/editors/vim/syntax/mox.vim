" Vim syntax file
" Language: MOX command files; made by tools/syntax
if exists('b:current_syntax')
  finish
endif

syn case ignore
syn keyword moxStatement acce[pt] add all appe[nd] asce[nding] blan[k] bott[om] brow[se] canc[el] case
syn keyword moxStatement clea[r] comm[and] cont[inue] copy coun[t] crea[te] date dele[te] dele[ted]
syn keyword moxStatement deli[mited] desc[ending] disp[lay] do edit else end endc[ase] endd[o] endi[f]
syn keyword moxStatement eof eras[e] exce[pt] fiel[ds] file file[s] find for from get gets go goto help
syn keyword moxStatement if inde[x] inpu[t] join like list loca[te] loop memo[ry] modi[fy] next off on
syn keyword moxStatement othe[rwise] pack pict[ure] quit read reca[ll] reco[rd] rein[dex] rele[ase]
syn keyword moxStatement rena[me] repl[ace] rese[t] rest[ore] retu[rn] save say sdf sele[ct] set skip
syn keyword moxStatement sort stat[us] stop stor[e] stru[cture] sum then to top tota[l] upda[te] use
syn keyword moxStatement wait whil[e] with
syn match moxOption /\v(<SET\s+)@<=(ALTERNATE|BELL|C0|C1|C2|CARRY|COLON|CONFIRM|CONSOLE|DEBUG|DEFAULT|ECHO|EJECT|ESCAPE|EXACT|FORMAT|HEADING|INTENSITY|LINKAGE|MARGIN|PRINT|R1|RAW|SCREEN|STEP|TALK)>/
syn match moxFunction /\v<(ABS|ASC|CHR|COLOR|DIR|FREEFILE|INKEY|INSTR|INT|LCASE|LEFT|LEN|MID|RECNO|RIGHT|RND|RUN|SDIR|SGN|SIN|SQR|STR|TEST|TRIM|TYPE3|UCASE|VAL)>\ze *\(/
syn match moxFunction /[$@!]\ze(/
syn match moxNumber /\v<\d+(\.\d*)?(E[+-]?\d*)?/
syn match moxOperator /\.\(AND\|OR\|NOT\)\./
syn match moxOperator /[-+*\/^=<>#&]/
syn match moxTruth /\<[TF]\>/
syn region moxString start=/"/ skip=/""/ end=/"/ oneline
syn match moxRemark /'.*/
syn match moxComment /^\s*\*.*/
syn match moxComment /^\s*NOTE.*/
syn region moxText matchgroup=moxStatement start=/^\s*TEXT.*/ end=/^\s*ENDTEXT.*/

hi def link moxStatement Statement
hi def link moxOption Type
hi def link moxFunction Function
hi def link moxNumber Number
hi def link moxOperator Operator
hi def link moxTruth Boolean
hi def link moxString String
hi def link moxRemark Comment
hi def link moxComment Comment
hi def link moxText String
let b:current_syntax = 'mox'
