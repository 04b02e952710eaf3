* A tour: two tables, walked, listed, counted, summed and changed.
* It puts back what it changes, so it can run as often as you like.
SET TALK OFF
TEXT
 THE PEOPLE
 A table of eight people, from the first record to the last:
ENDTEXT
USE people
LIST
?
? "Who earns more than 2000 and was born before 1960:"
LIST NAME, 1999-BORN, WAGE*12 FOR WAGE>2000 .AND. BORN<1960
?
? "Three records from the fourth on, and then the sixth alone:"
GOTO 4
LIST NAME,TOWN NEXT 3
LIST NAME,TOWN RECORD 6

?
? "Counted and summed; TALK shows each result:"
SET TALK ON
COUNT FOR MARRIED TO married
SUM WAGE,WAGE*12 TO month,year
SET TALK OFF
? "That is, each month, for one of them:"
COUNT TO people
? month/people

TEXT

 WALKING
 Bath comes up where LOCATE and CONTINUE find it:
ENDTEXT
LOCATE FOR TOWN="Bath      "
DO WHILE .NOT. EOF
  ?? #
  ? NAME
  CONTINUE
ENDDO
?
? "The last two, backwards, and how they earn:"
GO BOTTOM
STORE 2 TO left
DO WHILE left>0
  ?? NAME
  DO CASE
  CASE WAGE<1500
    ? "little"
  CASE WAGE<2500
    ? "enough"
  OTHERWISE
    ? "well"
  ENDCASE
  SKIP -1
  STORE left-1 TO left
ENDDO

TEXT

 TWO TABLES
 The orders stand in the second work area; B. names its fields.
 Whoever hasn't paid yet:
ENDTEXT
SELECT SECONDARY
USE orders
GO TOP
DO WHILE .NOT. EOF
  STORE B.PERSON TO who
  SELECT PRIMARY
  GOTO who
  SELECT SECONDARY
  IF .NOT. B.PAID
    ?? NAME
    ?? B.ITEM
    ? B.PRICE
  ENDIF
  SKIP
ENDDO
SET TALK ON
SUM B.PRICE FOR .NOT. B.PAID TO open
SET TALK OFF
USE
SELECT PRIMARY

TEXT

 CHANGING RECORDS
 Hugo gets a raise, and Dmitri is marked as deleted:
ENDTEXT
GOTO 8
STORE WAGE TO before
REPLACE WAGE WITH WAGE*1.1
GOTO 4
DELETE
LIST NAME,WAGE FOR #=4 .OR. #=8
?
? "The wages without the deleted record:"
SET DELETED ON
SET TALK ON
SUM WAGE
SET TALK OFF
SET DELETED OFF
? "And all as it was, to the byte (a table that isn't closed keeps its date):"
RECALL ALL
GOTO 8
REPLACE WAGE WITH before
LIST NAME,WAGE NEXT 1
SET TALK ON
