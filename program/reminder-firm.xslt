<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: the firm reminder (stage 2), one message per customer listing the invoices that reached
  this stage. Edit the words here; the layout is reminder-parts.xslt's. The opening words of
  Reminders FirmText in the settings, when set, replace $opening.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:import href="reminder-parts.xslt"/>

  <xsl:output method="html" indent="no" encoding="US-ASCII"/>

  <xsl:variable name="title">SECOND REMINDER</xsl:variable>
  <xsl:variable name="opening">We have not yet received payment for the invoices below, which are now well past their due date. Please pay the open balance within the next few days, or let us know if there is a problem with them.</xsl:variable>
  <xsl:variable name="closing">Thank you for your prompt attention.</xsl:variable>

</xsl:stylesheet>
