* Finds a member by the beginning of the name.
ERASE
STORE "                    " TO WANTED
@ 3,10 SAY "Name begins with" GET WANTED
READ
FIND TRIM(WANTED)
IF # = 0
  @ 5,10 SAY "There is no such member."
  @ 7,10 SAY "Any key goes on. "
  WAIT
ELSE
  SET FORMAT TO MEMBER
  READ
  SET FORMAT TO
ENDIF
