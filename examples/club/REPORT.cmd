* All members in order, and the fees.
ERASE
@ 0,0 SAY "MEMBERS"
?
LIST NAME,CITY,SINCE,FEE,PAID FOR .NOT. *
SUM FEE FOR .NOT. * TO ALLFEES
SUM FEE FOR PAID .AND. .NOT. * TO PAIDFEES
?
? "Fees " + STR(ALLFEES,9,2)
? "Paid " + STR(PAIDFEES,9,2)
?
? "Any key goes on."
WAIT
