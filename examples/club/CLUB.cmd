* Members of a rowing club: a menu, and a form to add and change them.
* The first start makes MEMBERS from SAMPLE; remove MEMBERS.dbf to begin anew.
SET TALK OFF
IF LEN(DIR("MEMBERS.dbf")) = 0
  USE SAMPLE
  COPY TO MEMBERS
ENDIF
USE MEMBERS
INDEX ON NAME TO BYNAME
USE MEMBERS INDEX BYNAME
STORE "1" TO CHOICE
DO WHILE CHOICE <> "0"
  ERASE
  @ 2,20 SAY "ROWING CLUB"
  @ 4,20 SAY "1  Add a member"
  @ 5,20 SAY "2  Change a member"
  @ 6,20 SAY "3  Browse all members"
  @ 7,20 SAY "4  Report"
  @ 8,20 SAY "0  Leave"
  STORE " " TO CHOICE
  @ 10,20 SAY "Your choice" GET CHOICE PICTURE "9"
  READ
  DO CASE
  CASE CHOICE = "1"
    DO ADD
  CASE CHOICE = "2"
    DO CHANGE
  CASE CHOICE = "3"
    GO TOP
    BROWSE
  CASE CHOICE = "4"
    DO REPORT
  ENDCASE
ENDDO
* Members who were marked with Ctrl-U in the browse view go.
PACK
USE
ERASE
SET TALK ON
