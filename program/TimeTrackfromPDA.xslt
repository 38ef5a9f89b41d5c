<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: the time entries a handheld recorded, booked as QuickBooks time-tracking entries.

  Receives the root element of the file fetched from the handheld, Dorvane_PDA: the worker
  in Employee (Name, ListID), the lists the desktop sent, and the recorded entries in
  TimeTracks (layout version 1, see HandheldFormat.htm). Writes the qbXML 1.1 message that
  adds one time-tracking entry per TimeTrack, without declaration and DOCTYPE:

    <QBXML><QBXMLMsgsRq onError="stopOnError">
      <TimeTrackingAddRq requestID="N"><TimeTrackingAdd>   N = the entry's position
        TxnDate             Date (YYYY-MM-DD)
        EntityRef           the worker: ListID from Employee/ListID, else FullName from
                            Employee/Name
        CustomerRef         FullName from Customer (a customer or Customer:Job); left out when
                            empty
        ItemServiceRef      FullName from Project (a service item); left out when empty
        Duration            Duration as written ("PT2H30M"), or "H:MM" ("2:30") turned into
                            "PT2H30M"
        PayrollItemWageRef  FullName from PayrollItem; left out when empty
        Notes               Notes, first 4095 letters; left out when empty
        IsBillable          "true" when Billable is true, yes or 1 (any case), else "false"
      </TimeTrackingAdd></TimeTrackingAddRq>
    </QBXMLMsgsRq></QBXML>

  A TimeTracks of another layout version stops the transform with a message, so that nothing
  is booked from entries this sheet cannot read. QuickBooks stops at the first entry it
  refuses; the entries before it stay booked.

  Every character that is not ASCII goes out as a character reference, as QuickBooks wants.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:output method="xml" encoding="US-ASCII" omit-xml-declaration="yes" indent="no"/>

  <xsl:template match="/">
    <xsl:apply-templates select="*"/>
  </xsl:template>

  <xsl:template match="*">
    <xsl:variable name="version" select="normalize-space(TimeTracks/@version)"/>
    <xsl:if test="$version != '' and $version != '1'">
      <xsl:message terminate="yes">
        <xsl:value-of select="concat('The handheld wrote its entries in layout version ', $version, '; this Dorvane reads version 1.')"/>
      </xsl:message>
    </xsl:if>
    <QBXML>
      <QBXMLMsgsRq onError="stopOnError">
        <xsl:for-each select="TimeTracks/TimeTrack">
          <TimeTrackingAddRq requestID="{position()}">
            <TimeTrackingAdd>
              <TxnDate><xsl:value-of select="normalize-space(Date)"/></TxnDate>
              <EntityRef>
                <xsl:choose>
                  <xsl:when test="normalize-space(/Dorvane_PDA/Employee/ListID) != ''">
                    <ListID><xsl:value-of select="normalize-space(/Dorvane_PDA/Employee/ListID)"/></ListID>
                  </xsl:when>
                  <xsl:otherwise>
                    <FullName><xsl:value-of select="normalize-space(/Dorvane_PDA/Employee/Name)"/></FullName>
                  </xsl:otherwise>
                </xsl:choose>
              </EntityRef>
              <xsl:call-template name="ref">
                <xsl:with-param name="element">CustomerRef</xsl:with-param>
                <xsl:with-param name="name" select="normalize-space(Customer)"/>
              </xsl:call-template>
              <xsl:call-template name="ref">
                <xsl:with-param name="element">ItemServiceRef</xsl:with-param>
                <xsl:with-param name="name" select="normalize-space(Project)"/>
              </xsl:call-template>
              <Duration>
                <xsl:call-template name="duration"><xsl:with-param name="text" select="normalize-space(Duration)"/></xsl:call-template>
              </Duration>
              <xsl:call-template name="ref">
                <xsl:with-param name="element">PayrollItemWageRef</xsl:with-param>
                <xsl:with-param name="name" select="normalize-space(PayrollItem)"/>
              </xsl:call-template>
              <xsl:if test="normalize-space(Notes) != ''">
                <Notes><xsl:value-of select="substring(Notes, 1, 4095)"/></Notes>
              </xsl:if>
              <IsBillable>
                <xsl:choose>
                  <xsl:when test="contains('|true|yes|1|', concat('|', translate(normalize-space(Billable), 'TRUEYS', 'trueys'), '|'))">true</xsl:when>
                  <xsl:otherwise>false</xsl:otherwise>
                </xsl:choose>
              </IsBillable>
            </TimeTrackingAdd>
          </TimeTrackingAddRq>
        </xsl:for-each>
      </QBXMLMsgsRq>
    </QBXML>
  </xsl:template>

  <!-- A reference by full name; nothing for an empty name. -->
  <xsl:template name="ref">
    <xsl:param name="element"/>
    <xsl:param name="name"/>
    <xsl:if test="$name != ''">
      <xsl:element name="{$element}"><FullName><xsl:value-of select="$name"/></FullName></xsl:element>
    </xsl:if>
  </xsl:template>

  <!-- "PT2H30M" stays; "2:30" becomes "PT2H30M". Anything else goes as written, for QuickBooks to judge. -->
  <xsl:template name="duration">
    <xsl:param name="text"/>
    <xsl:choose>
      <xsl:when test="contains($text, ':')">
        <xsl:value-of select="concat('PT', number(substring-before($text, ':')), 'H', number(substring-after($text, ':')), 'M')"/>
      </xsl:when>
      <xsl:otherwise><xsl:value-of select="$text"/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>

</xsl:stylesheet>
