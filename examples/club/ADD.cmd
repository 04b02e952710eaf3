* A new member. A record that got no name goes again.
APPEND BLANK
SET FORMAT TO MEMBER
READ
SET FORMAT TO
IF LEN(TRIM(NAME)) = 0
  DELETE
  PACK
ENDIF
